// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/IdentityProvider.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace velmora::ctl {

/// What `velmoractl account` is asked for.
struct AccountRequest {
    enum class Action : std::uint8_t { status, provider, signIn, cancel, signOut, check };

    Action action = Action::status;
    IdentitySource source{};    ///< sound; empty: none from now on
    bool isSecretAsked = false; ///< on the terminal
    std::string secretFile{};   ///< an absolute path; empty: none
};

/// The words after `account`, one after another. All throw a Fault for what cannot be understood.
class AccountWords {
public:
    /// `value` gives the word after the option.
    void takeOption(std::string_view option, const std::function<std::string_view()>& value);
    void takeOperand(std::string_view word);
    /// All of them, once there are no more.
    AccountRequest finished();

private:
    AccountRequest request_;
    const char* name_ = nullptr; ///< of the action, once it was said
    bool isNone_ = false;        ///< no provider is wanted
};

} // namespace velmora::ctl
