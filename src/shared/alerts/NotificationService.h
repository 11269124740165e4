// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Log.h"
#include "platform/MainLoop.h"
#include "platform/NotificationCenter.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

/// Posts the notices of the model: at once, without a cooldown, under the caller's own identifier, so that a
/// new notice takes the place of the last one of its kind. Failures are a line in the log. Any thread.
class NotificationService {
public:
    /// The service of this process. Main thread only.
    static NotificationService& shared();

    /// On the current platform's desktop.
    NotificationService();

    /// Asks the desktop for leave to show alerts, sounds and badges.
    void requestPermissions();

    void scheduleNotification(std::string title, std::string body, std::string identifier);

    /// Takes notices back, whether they are shown already or not.
    void removeNotifications(const std::vector<std::string>& identifiers);

private:
    std::shared_ptr<NotificationCenter> center_;
    std::shared_ptr<Log> log_;
    std::shared_ptr<MainLoop> loop_;
};

} // namespace velmora
