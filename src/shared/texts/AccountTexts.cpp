// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/AccountTexts.h"

#include "account/AccountSetup.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "base/Utf8.h"

#include <array>

namespace velmora::account {

namespace {

/// English, in the order of the faults.
constexpr std::array faults{
    trMark(""),
    trMark("No identity provider is set: enter its issuer and client first."),
    trMark("The part of Velmora that speaks to identity providers is missing: install the package "
           "velmora-openid."),
    trMark("No browser could be opened: is one installed and set as the desktop's default?"),
    trMark("This computer gave no port for the browser to come back to. Try again."),
    trMark(
        "The identity provider cannot be reached, or its certificate is not one that this computer trusts: "
        "look at the network, and at the spelling of the issuer."),
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

std::string unconfirmedText(const Situation& now)
{
    if (now.isChecking)
        return tr("You have signed in before. The provider is being asked whether this still holds …");
    if (now.source.issuer.empty())
        return tr("You have signed in before. Without a provider nobody can say whether this still holds.");
    return tr("You have signed in before. The provider has not confirmed that this still holds.");
}

std::string unreadText(const Situation& now)
{
    if (now.isChecking) return tr("The secret store is being asked who is signed in …");
    return tr("The secret store is locked or does not answer: who is signed in is not known yet.");
}

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

std::string shownText(const std::optional<std::string>& told)
{
    constexpr std::size_t longest = 200;
    const auto text = trimmed(printable(told.value_or("")));
    return text.size() <= longest ? text : std::string(utf8Prefix(text, longest)) + "…";
}

std::string stateText(const Situation& now, const std::string& since)
{
    if (now.isLoading) return tr("Signing in: go on in your browser.");
    if (now.isSignedIn) return since.empty() ? tr("Signed in.") : tr("Signed in since %1.", since);
    if (now.isRevoked)
        return tr("Your sign-in has ended: the provider has withdrawn it, or it was removed from the secret "
                  "store. You can sign in again.");
    if (now.isUnconfirmed) return unconfirmedText(now);
    if (now.isUnread || now.isChecking) return unreadText(now);
    if (now.source.issuer.empty())
        return tr("No identity provider is set, so there is nobody to sign in with.");
    return tr("Nobody is signed in.");
}

std::string providerText(const IdentitySource& source)
{
    if (source.issuer.empty()) return tr("No identity provider is set.");
    return tr("The provider is %1, which knows Velmora as %2.", shownText(source.issuer),
              shownText(source.clientID));
}

std::string flawText(const IdentitySource& source)
{
    using Flaw = AccountSetup::Flaw;
    switch (AccountSetup::flawOf(source)) {
    case Flaw::issuer:
        if (source.issuer.empty()) return tr("A provider needs its issuer: an address that it tells.");
        return tr("The issuer is an address like https://login.example.org, without \"?\", \"#\" or a user "
                  "name. It takes http on this computer alone.");
    case Flaw::client:
        if (source.clientID.empty())
            return tr("A provider needs a client: the name that it has given to Velmora.");
        return tr("The client takes letters, digits and signs without blanks.");
    case Flaw::parameters:
        return tr("More parameters are NAME=VALUE&NAME=VALUE, without those that Velmora sets itself.");
    default:
        return {};
    }
}

std::string secretRefusedText()
{
    return tr("The secret store did not take the client's secret, so nothing has changed: it may be locked.");
}

std::string purposeText()
{
    return tr(
        "Your name and e-mail address are for you to see here: nothing else in Velmora depends on them.");
}

} // namespace velmora::account
