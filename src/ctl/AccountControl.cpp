// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "AccountControl.h"

#include "base/SecretFile.h"
#include "base/TerminalSecret.h"
#include "base/Translation.h"
#include "base/Utf8.h"
#include "base/Wipe.h"
#include "output/AccountView.h"
#include "output/Json.h"
#include "wire/ModelFace.h"

#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>

namespace velmora::ctl {

namespace {

namespace face = wire::face::account;
using account::Situation;
using Action = AccountRequest::Action;

bool isKnown(const Situation& now)
{
    return now.isSignedIn || now.isUnconfirmed;
}

Failure lateFailure()
{
    return {ExitStatus::failed, tr("It was sent, and has not come to pass in time.")};
}

/// What the desktop has given to the terminal's program, so that the browser may come to the front.
std::string anchor()
{
    const auto* token = std::getenv("XDG_ACTIVATION_TOKEN");
    return token && isUtf8(token) ? token : "";
}

} // namespace

AccountControl::AccountControl(const Request& request) : request_(request), link_(loop_, request.patience) {}

std::string AccountControl::run()
{
    switch (request_.account.action) {
    case Action::provider:
        return provider();
    case Action::signIn:
        return signIn();
    case Action::cancel:
        return cancel();
    case Action::signOut:
        return signOut();
    case Action::check:
        return check();
    default:
        return told(link_.snapshot());
    }
}

std::string AccountControl::told(const Situation& now) const
{
    return request_.isJson ? jsonText(accountJson(now)) + '\n' : accountText(now);
}

/// Empty where none was given: the one that is kept counts then.
std::string AccountControl::secret() const
{
    const auto& wish = request_.account;
    if (!wish.secretFile.empty()) {
        auto found = secretIn(wish.secretFile);
        if (auto* text = std::get_if<std::string>(&found)) return std::move(*text);
        throw Failure(ExitStatus::failed, tr("The client's secret is not taken from %1: %2.", wish.secretFile,
                                             std::get<NoSecret>(found).why));
    }
    if (!wish.isSecretAsked) return {};
    auto typed = askSecret(tr("Secret of the client %1 (it is not shown): ", wish.source.clientID));
    if (typed && !typed->empty()) return std::move(*typed);
    throw Failure(ExitStatus::failed,
                  tr("No secret was entered. Without a terminal --secret-file names a file that has it."));
}

std::string AccountControl::provider()
{
    const auto& source = request_.account.source;
    KeyedArchive record;
    record.encode(face::issuer, source.issuer);
    record.encode(face::clientID, source.clientID);
    record.encode(face::parameters, source.parameters);
    auto given = secret();
    const bool hasSecret = !given.empty();
    if (hasSecret) record.encode(face::clientSecret, given);
    wipe(given);
    const auto isSettled = [](const Situation& at) { return !at.isKeepingSecret; };
    link_.awaited(isSettled); // an earlier one would have this refused
    link_.operate(face::use, record);
    record.wipe();
    const auto now = link_.awaited(isSettled);
    if (now.isSecretRefused) throw Failure(ExitStatus::failed, account::secretRefusedText());
    if (now.isKeepingSecret || now.source != source || (hasSecret && !now.hasClientSecret))
        throw lateFailure();
    return told(now);
}

std::string AccountControl::signIn()
{
    const auto before = link_.snapshot();
    if (before.source.issuer.empty())
        throw Failure(ExitStatus::failed, tr("No identity provider is set. This sets one: velmoractl account "
                                             "provider ISSUER CLIENT"));
    if (before.isLoading)
        throw Failure(ExitStatus::failed,
                      tr("A sign-in is under way. This ends it: velmoractl account cancel"));
    KeyedArchive record;
    record.encode(face::presentationAnchor, anchor());
    link_.operate(face::signIn, record);
    std::fprintf(stderr, "%s\n", tr("Go on in your browser.").c_str());
    const auto now = link_.awaited([](const auto& at) { return !at.isLoading; }, AccountLink::personPatience);
    if (now.isLoading) throw lateFailure();
    if (now.errorMessage) throw Failure(ExitStatus::failed, account::shownText(now.errorMessage));
    if (now.isSignedIn && (!before.isSignedIn || now.signedInSince != before.signedInSince)) return told(now);
    throw Failure(ExitStatus::failed, tr("The sign-in was cancelled."));
}

std::string AccountControl::cancel()
{
    link_.operate(face::cancelSignIn);
    const auto now = link_.awaited([](const auto& at) { return !at.isLoading; });
    if (now.isLoading) throw lateFailure();
    return told(now);
}

std::string AccountControl::signOut()
{
    link_.operate(face::signOut);
    const auto isOut = [](const Situation& now) { return !isKnown(now) && !now.isUnread && !now.isLoading; };
    const auto now = link_.awaited(isOut);
    if (!isOut(now)) throw lateFailure();
    return told(now);
}

std::string AccountControl::check()
{
    const auto before = link_.snapshot();
    if (before.isUnconfirmed || before.isUnread) link_.operate(face::checkAgain);
    const auto now =
        link_.awaited([](const auto& at) { return !at.isChecking && !(at.isRevoked && isKnown(at)); });
    if (now.isSignedIn) return told(now);
    throw Failure(ExitStatus::failed, accountState(now));
}

} // namespace velmora::ctl
