// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "link/AccountLink.h"
#include "options/Options.h"

#include <string>

namespace velmora::ctl {

/// The commands of `velmoractl account`, over the user's `velmora`. All throw a Failure where they cannot be
/// done; what a command does has been done when it returns.
class AccountControl {
public:
    explicit AccountControl(const Request& request);

    /// What is to be printed.
    std::string run();

private:
    std::string provider();
    std::string signIn();
    std::string cancel();
    std::string signOut();
    std::string check();

    std::string secret() const;
    std::string told(const account::Situation& now) const;

    const Request& request_;
    EventLoop loop_;
    AccountLink link_;
};

} // namespace velmora::ctl
