// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/VelmoraLink.h"
#include "texts/AccountTexts.h"

#include <chrono>
#include <functional>
#include <optional>

namespace velmora::ctl {

/// The answer to a GetAll of the account's object, bounded. Throws a Failure for an error and for what is of
/// another type than it should be.
account::Situation readAccount(const dbus::Message& reply);

/// The user's `velmora` as the one that knows the account.
class AccountLink {
public:
    /// Longer than the secret store and a provider take.
    static constexpr std::chrono::seconds answerPatience{40};
    /// Longer than a sign-in takes: five minutes for the person, one for the provider, and what it waits for.
    static constexpr std::chrono::seconds personPatience{400};

    /// As VelmoraLink, whose failures are those of all functions here.
    AccountLink(EventLoop& loop, std::optional<std::chrono::seconds> patience);

    account::Situation snapshot();
    void operate(const char* operation) { velmora_.operate(operation); }
    /// `record` is wiped once it is sent.
    void operate(const char* operation, KeyedArchive record);

    /// The first look at which that is so, or the last one before patience ends.
    account::Situation awaited(const std::function<bool(const account::Situation& now)>& isSo,
                               std::chrono::seconds patience = answerPatience);

private:
    VelmoraLink velmora_;
};

} // namespace velmora::ctl
