// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteAccount.h"

#include "base/Wipe.h"
#include "client/QtText.h"

#include <QStringList>

namespace velmora {

namespace wiring = wire::face::account;

namespace {

IdentitySource sourceOf(const QVariantMap& form)
{
    const auto part = [&](const char* key) {
        return form.value(QString::fromLatin1(key)).toString().toStdString();
    };
    return {.issuer = part(wiring::issuer),
            .clientID = part(wiring::clientID),
            .parameters = part(wiring::parameters)};
}

std::optional<std::string> first(const QVariant& texts)
{
    const auto list = texts.toStringList();
    return list.isEmpty() ? std::nullopt : std::optional(list.first().toStdString());
}

} // namespace

void RemoteAccount::ask(const char* operation, const KeyedArchive& record)
{
    Q_EMIT recordOperationWanted(QString::fromLatin1(operation), wired::mapped(record));
}

void RemoteAccount::signIn()
{
    ask(wiring::signIn, {});
}

void RemoteAccount::use(const QVariantMap& provider, const QString& secret)
{
    const auto source = sourceOf(provider);
    KeyedArchive record;
    record.encode(wiring::issuer, source.issuer);
    record.encode(wiring::clientID, source.clientID);
    record.encode(wiring::parameters, source.parameters);
    auto given = secret.toStdString();
    if (!given.empty()) record.encode(wiring::clientSecret, given);
    wipe(given);
    ask(wiring::use, record);
    record.wipe();
}

QString RemoteAccount::flawText(const QVariantMap& provider) const
{
    return text(account::flawText(sourceOf(provider)));
}

IdentitySource RemoteAccount::source() const
{
    return sourceOf(provider());
}

QVariantMap RemoteAccount::provider() const
{
    QVariantMap parts;
    for (const auto* key : {wiring::issuer, wiring::clientID, wiring::parameters})
        parts.insert(QString::fromLatin1(key), value(key).toString());
    return parts;
}

account::Situation RemoteAccount::situation() const
{
    return {.source = source(),
            .isSignedIn = isSignedIn(),
            .isLoading = isLoading(),
            .isUnread = isUnread(),
            .isUnconfirmed = isUnconfirmed(),
            .isChecking = isChecking(),
            .isRevoked = isRevoked()};
}

QString RemoteAccount::name() const
{
    return text(account::shownText(first(value(wiring::userDisplayName))));
}

QString RemoteAccount::mail() const
{
    return text(account::shownText(first(value(wiring::userEmail))));
}

QString RemoteAccount::errorText() const
{
    return text(account::shownText(first(value(wiring::errorMessage))));
}

QString RemoteAccount::stateText() const
{
    return text(account::stateText(situation(), moment(wiring::signedInSince).toStdString()));
}

QString RemoteAccount::providerText() const
{
    return text(account::providerText(source()));
}

QString RemoteAccount::secretText() const
{
    return isSecretRefused() ? text(account::secretRefusedText()) : QString();
}

QString RemoteAccount::purposeText() const
{
    return text(account::purposeText());
}

} // namespace velmora
