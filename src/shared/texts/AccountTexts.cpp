// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/AccountTexts.h"

#include "base/Translation.h"

#include <array>

namespace velmora::account {

namespace {

/// English, in the order of the faults.
constexpr std::array faults{
    trMark(""),
    trMark("No identity provider is chosen: enter its issuer and client first."),
    trMark("The part of Velmora that speaks to identity providers is missing: install the package "
           "velmora-openid."),
    trMark("No browser could be opened: is one installed and set as the desktop's default?"),
    trMark("This computer gave no port for the browser to come back to. Try again."),
    trMark("The identity provider cannot be reached: look at the network, and at the spelling of the "
           "issuer."),
    trMark("The sign-in was not finished in the browser in time. Try again."),
    trMark("The identity provider refused the sign-in."),
    trMark("The identity provider does not know this client, or does not let it sign in: look at client and "
           "secret."),
    trMark("The identity provider no longer honours the sign-in: sign in anew."),
    trMark("The identity provider's answer is not what it should be, so it is not trusted: Velmora's log "
           "says more."),
    trMark("The identity provider's answer is not signed as it should be, so it is not trusted: Velmora's "
           "log says more."),
};
static_assert(faults.size() == static_cast<std::size_t>(IdentityFault::signature) + 1);

} // namespace

std::string faultText(IdentityFault fault)
{
    return fault == IdentityFault::canceled ? std::string() : tr(faults.at(static_cast<std::size_t>(fault)));
}

std::string signedInPage()
{
    return tr("You are signed in. You can close this page.");
}

std::string canceledPage()
{
    return tr("You are not signed in. You can close this page.");
}

std::string failedPage()
{
    return tr("The sign-in has failed, and Velmora says why. You can close this page.");
}

} // namespace velmora::account
