// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "account/KeptIdentity.h"
#include "base/Date.h"
#include "base/Lifetime.h"
#include "base/Observable.h"
#include "platform/IdentityProvider.h"
#include "platform/Platform.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace velmora {

/// Lets the user sign in with the identity provider, keeps that identity in the secret store, asks at each
/// start whether it still holds, and signs out. The identity is for show: nothing else depends on it.
///
/// Main thread only; the secret store is waited for on a thread of its own.
class AppleAuthManager {
    Lifetime lifetime_;
    std::shared_ptr<MainLoop> loop_;
    std::shared_ptr<Clock> clock_;
    std::shared_ptr<Log> log_;
    std::shared_ptr<Preferences> preferences_;
    std::shared_ptr<IdentityProvider> provider_;
    std::shared_ptr<SecretStore> secrets_;

public:
    static AppleAuthManager& shared();

    /// Restores what is kept.
    AppleAuthManager();
    AppleAuthManager(const AppleAuthManager&) = delete;
    AppleAuthManager& operator=(const AppleAuthManager&) = delete;
    ~AppleAuthManager();

    Observable<bool> isSignedIn{false}; ///< with a fresh credential, or one that the provider has confirmed
    Observable<std::optional<std::string>> userDisplayName{std::nullopt};
    Observable<std::optional<std::string>> userEmail{std::nullopt};
    Observable<bool> isLoading{false};                                 ///< a sign-in is under way
    Observable<std::optional<std::string>> errorMessage{std::nullopt}; ///< of the last sign-in
    /// The secret store has not said who is known from before, being locked or slow.
    Observable<bool> isUnread{false};
    /// Somebody is known from before, and the provider has not confirmed it in this run.
    Observable<bool> isUnconfirmed{false};
    Observable<bool> isChecking{false}; ///< store or provider is being asked now
    /// The provider no longer honours the sign-in that was kept: the user has to sign in anew.
    Observable<bool> isRevoked{false};
    Observable<std::optional<Date>> signedInSince{std::nullopt};

    /// Has the provider ask the user, in a window that opens for `anchor`. False, and nothing changes, while
    /// a sign-in is under way.
    bool signIn(const IdentityProvider::PresentationAnchor& anchor);
    void cancelSignIn();
    void signOut(); ///< ends a sign-in under way, too

    /// Asks the secret store or the provider again, where it has not said who is known from before. That is
    /// also done by itself after some minutes, a few times.
    void checkAgain();

private:
    /// What has become of who signed in.
    struct Keeping {
        KeptIdentity identity{};
        std::string before{}; ///< the user whom the store kept; empty: none
        bool isKept = false;
    };

    template <typename Work, typename Then>
    void withSecrets(Work work, Then then);
    void restoreSignIn();
    void restored(const KeptIdentity::Look& look);
    void checkLater();
    void answered(IdentityProvider::CredentialState state);
    void completed(const IdentityProvider::Result& result, std::uint64_t signOuts);
    void handle(const IdentityCredential& credential);
    void failed(const IdentityError& error);
    void signedIn(const Keeping& keeping);
    void keepLater(const KeptIdentity& identity, std::size_t attempt);
    void clearStoredCredentials();
    void cleared(bool isCertain);
    std::optional<Date> keptSince() const;

    std::string user_;           ///< who is known; empty: nobody
    std::uint64_t epoch_ = 0;    ///< of that knowledge: what was asked about an earlier one counts no more
    std::uint64_t signOuts_ = 0; ///< a sign-in that began before the last of them counts no more
    std::size_t attempts_ = 0;   ///< of asking again
    bool isClearing_ = false;    ///< the secret store is removing who was known
    MainLoop::Timer nextCheck_;
    MainLoop::Timer nextOffer_;        ///< of who is signed in to the secret store, which has not taken it
    std::unique_ptr<WorkQueue> queue_; ///< while the secret store is waited for
    int waiting_ = 0;                  ///< for it
};

} // namespace velmora
