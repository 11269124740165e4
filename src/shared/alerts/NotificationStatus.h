// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "base/Observable.h"
#include "platform/NotificationCenter.h"

#include <memory>
#include <optional>
#include <string>

namespace velmora {

/// Whether the desktop shows notices, and a notice to try it. Main thread only.
class NotificationStatus {
    Lifetime lifetime_;

public:
    static constexpr auto testIdentifier = "test";

    /// On the current platform's desktop.
    NotificationStatus();
    NotificationStatus(const NotificationStatus&) = delete;
    NotificationStatus& operator=(const NotificationStatus&) = delete;

    Observable<std::string> server{""};        ///< its name; empty: none runs
    Observable<bool> isServerStartable{false}; ///< none runs, and the first notice starts one
    Observable<bool> isInhibited{false};       ///< the server says that it keeps notices to itself
    Observable<std::optional<std::string>> testResult{std::nullopt}; ///< nothing: none; empty: it was taken

    /// Sends a notice for once; what comes of it, `testResult` tells.
    void sendTestNotice();

private:
    void look();

    std::shared_ptr<NotificationCenter> center_;
    Subscription changes_;
};

} // namespace velmora
