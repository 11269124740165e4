// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "account/AppleAuthManager.h"
#include "base/Lifetime.h"
#include "base/Observable.h"
#include "platform/Platform.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The user's word on who tells their identity: the provider, kept in the preferences, and the client's
/// secret, where the provider demands one, in the secret store.
///
/// With a provider chosen the manager of the sign-in is there as soon as the secret store is ready, so that
/// it asks at each start whether the sign-in still holds; otherwise when somebody asks for it. Main thread
/// only.
class AccountSetup {
    Lifetime lifetime_;
    std::shared_ptr<MainLoop> loop_;
    std::shared_ptr<Log> log_;
    std::shared_ptr<Preferences> preferences_;
    std::shared_ptr<IdentityProvider> provider_;
    std::shared_ptr<SecretStore> secrets_;

public:
    static constexpr auto clientSecretService = "app.velmora.oidc.client";

    AccountSetup();
    AccountSetup(const AccountSetup&) = delete;
    AccountSetup& operator=(const AccountSetup&) = delete;
    ~AccountSetup();

    Observable<IdentitySource> source;
    Observable<bool> hasClientSecret;
    Observable<bool> isKeepingSecret{false}; ///< that a person has given; what comes of it is not known yet
    /// The secret store did not take what a person gave last, so that nothing has changed.
    Observable<bool> isSecretRefused{false};

    /// What keeps a source from being used.
    enum class Flaw : std::uint8_t {
        none,
        issuer,     ///< not a URL with https, or http on this machine, without more than host, port and path
        client,     ///< empty, or not of printable ASCII characters
        parameters, ///< not NAME=VALUE&NAME=VALUE, or one that is Velmora's to set
    };
    /// None for a source that is empty altogether: there is to be no provider.
    static Flaw flawOf(const IdentitySource& source);
    /// Where a client's secret is in the secret store.
    static std::string clientSecretAccount(const IdentitySource& source);

    /// From now on this provider counts. Another one, or another client, signs the user out first. A secret
    /// is kept before anything changes; without one that of the same client stays. False, and nothing is
    /// done, where the source has a flaw, or while an earlier secret is being kept.
    bool use(const IdentitySource& source, const std::optional<std::string>& clientSecret);

    /// Null where it has not been asked for.
    AppleAuthManager* manager() const { return manager_; }
    AppleAuthManager& madeManager();
    /// Called once, when the manager has been made.
    std::function<void()> onManager;

private:
    void adopt(const IdentitySource& wanted, bool hasSecret);
    IdentityProvider::ClientSecret keptSecret() const;
    IdentitySource kept() const;

    AppleAuthManager* manager_ = nullptr;
    bool isReady_ = false;             ///< the secret store has answered
    std::unique_ptr<WorkQueue> queue_; ///< keeps secrets; made for that
};

} // namespace velmora
