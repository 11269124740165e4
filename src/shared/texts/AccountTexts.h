// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"
#include "platform/IdentityProvider.h"

#include <optional>
#include <string>

/// What a person reads of their account and of the provider that they sign in with.
namespace velmora::account {

/// As it is known; see wire::face::account.
struct Situation {
    IdentitySource source{};
    bool hasClientSecret = false;
    bool isKeepingSecret = false;
    bool isSecretRefused = false;
    bool isSignedIn = false;
    bool isLoading = false;
    bool isUnread = false;
    bool isUnconfirmed = false;
    bool isChecking = false;
    bool isRevoked = false;
    std::optional<std::string> name{}; ///< as the provider has it: it may be anything
    std::optional<std::string> email{};
    std::optional<std::string> errorMessage{};
    std::optional<Date> signedInSince{};
};

/// Why a sign-in has failed, and what helps; empty for `canceled`. Any thread.
std::string faultText(IdentityFault fault);

/// What the browser says once its part in a sign-in is done.
std::string signedInPage();
std::string canceledPage();
std::string failedPage();

/// A text of somebody else's as one that can be shown: one line of a bounded length. Empty where there is
/// none.
std::string shownText(const std::optional<std::string>& told);

/// Whether somebody is signed in, and what is to be done about it; `since` is that date as a person reads it,
/// or empty.
std::string stateText(const Situation& now, const std::string& since);
/// With whom one signs in.
std::string providerText(const IdentitySource& source);
/// What keeps a provider from being used; empty: nothing.
std::string flawText(const IdentitySource& source);
/// After the secret store has not taken a client's secret.
std::string secretRefusedText();
/// What signing in is good for.
std::string purposeText();

} // namespace velmora::account
