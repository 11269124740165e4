// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteObject.h"

#include <QString>
#include <QVariantMap>

#include "texts/AccountTexts.h"

namespace velmora {

/// The user's account: wire::face::account, and what that says in words.
class RemoteAccount : public velmora::RemoteObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(AppleAuthManager)
    QML_SINGLETON
    static constexpr const auto& table = wire::face::account::properties;
    VELMORA_MIRRORED(bool, isSignedIn)
    VELMORA_MIRRORED(bool, isLoading)
    VELMORA_MIRRORED(bool, isUnread)
    VELMORA_MIRRORED(bool, isUnconfirmed)
    VELMORA_MIRRORED(bool, isChecking)
    VELMORA_MIRRORED(bool, isRevoked)
    VELMORA_MIRRORED(bool, hasClientSecret)
    VELMORA_MIRRORED(bool, isKeepingSecret)
    VELMORA_MIRRORED(bool, isSecretRefused)
    Q_PROPERTY(QString name READ name NOTIFY changed) ///< empty: not known
    Q_PROPERTY(QString mail READ mail NOTIFY changed) ///< likewise
    Q_PROPERTY(QString stateText READ stateText NOTIFY changed)
    Q_PROPERTY(QString errorText READ errorText NOTIFY changed) ///< of the last sign-in; empty: none
    /// The provider, by the wire's keys.
    Q_PROPERTY(QVariantMap provider READ provider NOTIFY changed)
    Q_PROPERTY(bool hasProvider READ hasProvider NOTIFY changed)
    Q_PROPERTY(QString providerText READ providerText NOTIFY changed)
    /// Why the last provider's secret was not taken; empty: it was.
    Q_PROPERTY(QString secretText READ secretText NOTIFY changed)
    Q_PROPERTY(QString purposeText READ purposeText CONSTANT)
public:
    explicit RemoteAccount(QObject* parent = nullptr) : RemoteObject(wire::face::account::face, parent) {}

    /// Whether the browser comes to the front is the desktop's affair: Qt 6.4 has no token of a click to pass
    /// on.
    Q_INVOKABLE void signIn();
    Q_INVOKABLE void cancelSignIn() { ask(wire::face::account::cancelSignIn); }
    Q_INVOKABLE void signOut() { ask(wire::face::account::signOut); }
    Q_INVOKABLE void checkAgain() { ask(wire::face::account::checkAgain); }

    /// What keeps a provider, as a form fills it in, from being used; empty: nothing.
    Q_INVOKABLE QString flawText(const QVariantMap& provider) const;
    /// With an empty secret the one that is kept for the same client is meant; without an issuer there is no
    /// provider from now on.
    Q_INVOKABLE void use(const QVariantMap& provider, const QString& secret);

    QString name() const;
    QString mail() const;
    QString stateText() const;
    QString errorText() const;
    QVariantMap provider() const;
    bool hasProvider() const { return !source().issuer.empty(); }
    QString providerText() const;
    QString secretText() const;
    QString purposeText() const;

private:
    void ask(const char* operation) { Q_EMIT operationWanted(QString::fromLatin1(operation)); }
    void ask(const char* operation, const KeyedArchive& record);
    IdentitySource source() const;
    account::Situation situation() const;
};

} // namespace velmora
