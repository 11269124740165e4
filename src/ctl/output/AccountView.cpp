// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "output/AccountView.h"

#include "base/Moment.h"
#include "base/Translation.h"
#include "output/Lines.h"
#include "wire/ModelFace.h"

#include <nlohmann/json.hpp>

namespace velmora::ctl {

namespace {

namespace face = wire::face::account;

Json textJson(const std::optional<std::string>& text)
{
    return text ? Json(*text) : Json();
}

std::string secretState(const account::Situation& now)
{
    if (now.isKeepingSecret) return tr("is being kept …");
    return now.hasClientSecret ? tr("kept in the secret store") : std::string();
}

} // namespace

std::string accountState(const account::Situation& now)
{
    return account::stateText(now, now.signedInSince ? localTime(*now.signedInSince) : std::string());
}

std::string accountText(const account::Situation& now)
{
    Lines lines;
    lines.add(tr("Account"), accountState(now));
    lines.add(tr("Name"), account::shownText(now.name));
    lines.add(tr("E-mail"), account::shownText(now.email));
    lines.add(tr("Last sign-in"), account::shownText(now.errorMessage));
    lines.add(tr("Provider"), account::shownText(now.source.issuer));
    lines.add(tr("Client"), account::shownText(now.source.clientID));
    lines.add(tr("Its secret"), secretState(now));
    lines.add(tr("Parameters"), account::shownText(now.source.parameters));
    return lines.text();
}

Json accountJson(const account::Situation& now)
{
    return {{face::isSignedIn, now.isSignedIn},
            {face::isLoading, now.isLoading},
            {face::isUnread, now.isUnread},
            {face::isUnconfirmed, now.isUnconfirmed},
            {face::isChecking, now.isChecking},
            {face::isRevoked, now.isRevoked},
            {face::userDisplayName, textJson(now.name)},
            {face::userEmail, textJson(now.email)},
            {face::signedInSince, now.signedInSince ? Json(utcTime(*now.signedInSince)) : Json()},
            {face::errorMessage, textJson(now.errorMessage)},
            {face::issuer, now.source.issuer},
            {face::clientID, now.source.clientID},
            {face::parameters, now.source.parameters},
            {face::hasClientSecret, now.hasClientSecret},
            {face::isKeepingSecret, now.isKeepingSecret},
            {face::isSecretRefused, now.isSecretRefused}};
}

} // namespace velmora::ctl
