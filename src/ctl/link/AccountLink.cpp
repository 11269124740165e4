// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/AccountLink.h"

#include <utility>

namespace velmora::ctl {

namespace {

namespace face = wire::face::account;

constexpr std::chrono::milliseconds lookInterval{100};

/// Reads the value of one property, of whose type the variant has been found to be.
void readValue(sd_bus_message* message, std::string_view name, account::Situation& now)
{
    if (name == face::isSignedIn) now.isSignedIn = readTruth(message);
    if (name == face::isLoading) now.isLoading = readTruth(message);
    if (name == face::isUnread) now.isUnread = readTruth(message);
    if (name == face::isUnconfirmed) now.isUnconfirmed = readTruth(message);
    if (name == face::isChecking) now.isChecking = readTruth(message);
    if (name == face::isRevoked) now.isRevoked = readTruth(message);
    if (name == face::userDisplayName) now.name = readOptionalText(message);
    if (name == face::userEmail) now.email = readOptionalText(message);
    if (name == face::errorMessage) now.errorMessage = readOptionalText(message);
    if (name == face::signedInSince) now.signedInSince = readDate(message);
    if (name == face::issuer) now.source.issuer = readText(message);
    if (name == face::clientID) now.source.clientID = readText(message);
    if (name == face::parameters) now.source.parameters = readText(message);
    if (name == face::hasClientSecret) now.hasClientSecret = readTruth(message);
    if (name == face::isKeepingSecret) now.isKeepingSecret = readTruth(message);
    if (name == face::isSecretRefused) now.isSecretRefused = readTruth(message);
}

} // namespace

account::Situation readAccount(const dbus::Message& reply)
{
    account::Situation now;
    readProperties(reply, face::face, [&](auto* message, auto name) { readValue(message, name, now); });
    return now;
}

AccountLink::AccountLink(EventLoop& loop, std::optional<std::chrono::seconds> patience)
    : velmora_(loop, face::face, patience)
{
}

account::Situation AccountLink::snapshot()
{
    return readAccount(velmora_.properties());
}

void AccountLink::operate(const char* operation, KeyedArchive record)
{
    velmora_.operate(operation, std::move(record));
}

account::Situation AccountLink::awaited(const std::function<bool(const account::Situation& now)>& isSo,
                                        std::chrono::seconds patience)
{
    return velmora_.awaited(
        lookInterval, patience, [this] { return snapshot(); }, isSo);
}

} // namespace velmora::ctl
