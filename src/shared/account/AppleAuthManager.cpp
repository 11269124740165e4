// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "account/AppleAuthManager.h"

#include "base/Text.h"
#include "base/Utf8.h"

#include <array>
#include <charconv>
#include <chrono>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "AppleAuthManager";

/// After each of these the provider is asked once more. The network may be on its way at log-in.
constexpr std::array<std::chrono::minutes, 3> pauses{std::chrono::minutes{1}, std::chrono::minutes{10},
                                                     std::chrono::minutes{60}};
constexpr std::chrono::seconds slack{20};

/// Some are known by one of the two names alone; then there is no name.
std::optional<std::string> fullName(const IdentityCredential& credential)
{
    if (!credential.givenName || !credential.familyName || credential.givenName->empty()) return std::nullopt;
    return trimmed(*credential.givenName + " " + *credential.familyName);
}

} // namespace

AppleAuthManager& AppleAuthManager::shared()
{
    return Platform::current().singleton<AppleAuthManager>();
}

AppleAuthManager::AppleAuthManager()
    : loop_(Platform::current().mainLoop),
      clock_(Platform::current().clock),
      log_(Platform::current().log),
      preferences_(Platform::current().preferences),
      provider_(Platform::current().identityProvider),
      secrets_(Platform::current().secretStore)
{
    restoreSignIn();
}

AppleAuthManager::~AppleAuthManager()
{
    if (queue_) secrets_->cancel(); // or its answer would be waited for
}

/// `work` on the queue, then `then` with its result here. In the order of the calls.
template <typename Work, typename Then>
void AppleAuthManager::withSecrets(Work work, Then then)
{
    if (!queue_) queue_ = Platform::current().makeWorkQueue("velmora-account");
    ++waiting_;
    auto done = lifetime_.guard([this, then = std::move(then)](const auto& result) {
        if (--waiting_ == 0) queue_.reset(); // and its thread
        then(result);
    });
    queue_->async([loop = loop_, work = std::move(work), done = std::move(done)] {
        loop->post([done, result = work()] { done(result); });
    });
}

// -- From the last run

void AppleAuthManager::restoreSignIn()
{
    if (preferences_->boolean(preference_key::isSignOutDue)) return clearStoredCredentials();
    isChecking.set(true);
    withSecrets([secrets = secrets_] { return KeptIdentity::read(*secrets); },
                [this, epoch = epoch_](const KeptIdentity::Look& look) {
                    if (epoch == epoch_) restored(look);
                });
}

void AppleAuthManager::restored(const KeptIdentity::Look& look)
{
    isChecking.set(false);
    isUnread.set(look.status == SecretStatus::unavailable);
    if (isUnread.get()) return checkLater();
    if (look.identity.user.empty()) return;
    user_ = look.identity.user;
    attempts_ = 0;
    userDisplayName.set(look.identity.name);
    userEmail.set(look.identity.email);
    signedInSince.set(keptSince());
    isUnconfirmed.set(true);
    checkAgain();
}

void AppleAuthManager::checkAgain()
{
    if (isChecking.get() || isClearing_) return;
    nextCheck_.reset();
    if (isUnread.get()) return restoreSignIn();
    if (!isUnconfirmed.get()) return;
    isChecking.set(true);
    const auto answer = lifetime_.guard([this, epoch = epoch_](IdentityProvider::CredentialState state) {
        if (epoch == epoch_) answered(state);
    });
    provider_->credentialState(user_, [loop = loop_, answer](IdentityProvider::CredentialState state) {
        loop->post([answer, state] { answer(state); });
    });
}

void AppleAuthManager::answered(IdentityProvider::CredentialState state)
{
    isChecking.set(false);
    switch (state) {
    case IdentityProvider::CredentialState::revoked:
    case IdentityProvider::CredentialState::notFound:
        log_->error(category, "Apple Sign In: credential revoked or not found — signing out.");
        isRevoked.set(true);
        clearStoredCredentials();
        break;
    case IdentityProvider::CredentialState::authorized:
        isUnconfirmed.set(false);
        isSignedIn.set(true);
        log_->info(category, "Apple Sign In: credential still valid for stored user.");
        break;
    case IdentityProvider::CredentialState::transferred:
        break;
    case IdentityProvider::CredentialState::unknown:
        checkLater();
        break;
    }
}

void AppleAuthManager::checkLater()
{
    if (attempts_ == pauses.size()) return;
    nextCheck_ = loop_->after(
        pauses.at(attempts_++), [this] { checkAgain(); }, slack);
}

// -- A sign-in

bool AppleAuthManager::signIn(const IdentityProvider::PresentationAnchor& anchor)
{
    if (isLoading.get()) return false;
    isLoading.set(true);
    errorMessage.set(std::nullopt);
    using Scope = IdentityProvider::Scope;
    const auto done = lifetime_.guard([this, signOuts = signOuts_](const IdentityProvider::Result& result) {
        completed(result, signOuts);
    });
    provider_->performRequest({Scope::fullName, Scope::email}, anchor,
                              [loop = loop_, done](IdentityProvider::Result result) {
                                  loop->post([done, result = std::move(result)] { done(result); });
                              });
    return true;
}

void AppleAuthManager::cancelSignIn()
{
    if (isLoading.get()) provider_->cancelRequest();
}

void AppleAuthManager::completed(const IdentityProvider::Result& result, std::uint64_t signOuts)
{
    const auto* credential = std::get_if<IdentityCredential>(&result);
    if (credential && signOuts == signOuts_) return handle(*credential);
    if (credential) provider_->forget(credential->user); // signed out meanwhile
    if (const auto* error = std::get_if<IdentityError>(&result)) return failed(*error);
    isLoading.set(false);
}

/// A provider may tell name and address at the first sign-in alone: what is kept of the same user stands for
/// what it leaves out.
void AppleAuthManager::handle(const IdentityCredential& credential)
{
    const auto keep = [credential, secrets = secrets_] {
        KeptIdentity identity{
            .user = credential.user, .name = fullName(credential), .email = credential.email};
        const auto before = KeptIdentity::read(*secrets);
        const bool isSameUser = before.identity.user == identity.user;
        if (!identity.name && isSameUser) identity.name = before.identity.name;
        if (!identity.email && isSameUser) identity.email = before.identity.email;
        const bool isKept = before.status != SecretStatus::unavailable && identity.save(*secrets);
        return Keeping{.identity = identity, .before = before.identity.user, .isKept = isKept};
    };
    ++epoch_; // what is still asked about who was known before is of no interest
    isClearing_ = false;
    nextOffer_.reset();
    withSecrets(keep, [this, signOuts = signOuts_](const Keeping& keeping) {
        if (signOuts == signOuts_) return signedIn(keeping);
        // Signed out meanwhile, which has the provider forget whom it finds in the store.
        if (!keeping.isKept) provider_->forget(keeping.identity.user);
        isLoading.set(false);
    });
}

void AppleAuthManager::signedIn(const Keeping& keeping)
{
    const auto& identity = keeping.identity;
    const auto& before = user_.empty() ? keeping.before : user_;
    if (!before.empty() && before != identity.user) provider_->forget(before);
    if (!keeping.isKept) {
        log_->warning(category,
                      "The secret store did not take who is signed in, being locked, absent or slow: "
                      "it is offered again some times until this program ends.");
        keepLater(identity, 0);
    }
    user_ = identity.user;
    preferences_->set(preference_key::isSignOutDue, false);
    isUnread.set(false);
    isChecking.set(false);
    nextCheck_.reset();
    const auto now = clock_->now();
    preferences_->setText(preference_key::signedInSince,
                          std::to_string(static_cast<std::int64_t>(now.sinceReference)));
    isUnconfirmed.set(false);
    isRevoked.set(false);
    isSignedIn.set(true);
    userDisplayName.set(identity.name);
    userEmail.set(identity.email);
    signedInSince.set(now);
    isLoading.set(false);
    constexpr std::size_t shown = 8;
    log_->info(category,
               "Apple Sign In: signed in as " + std::string(utf8Prefix(identity.user, shown)) + "…");
}

void AppleAuthManager::keepLater(const KeptIdentity& identity, std::size_t attempt)
{
    if (attempt == pauses.size()) return;
    const auto offer = [this, identity, attempt] {
        withSecrets([identity, secrets = secrets_] { return identity.save(*secrets); },
                    [this, identity, attempt, epoch = epoch_](bool isKept) {
                        if (!isKept && epoch == epoch_) keepLater(identity, attempt + 1);
                    });
    };
    nextOffer_ = loop_->after(pauses.at(attempt), offer, slack);
}

void AppleAuthManager::failed(const IdentityError& error)
{
    isLoading.set(false);
    if (error.code == IdentityError::canceled) return;
    errorMessage.set(error.localizedDescription);
    log_->error(category, "Apple Sign In failed: " + error.localizedDescription);
}

// -- The end of one

void AppleAuthManager::signOut()
{
    cancelSignIn();
    ++signOuts_;
    isRevoked.set(false);
    if (isClearing_) return;
    if (!user_.empty()) provider_->forget(user_);
    clearStoredCredentials();
    log_->info(category, "Apple Sign In: user signed out.");
}

/// What cannot be removed now is not restored by the next start either, which tries again.
void AppleAuthManager::clearStoredCredentials()
{
    ++epoch_;
    isClearing_ = true;
    nextCheck_.reset();
    nextOffer_.reset();
    isChecking.set(false);
    preferences_->set(preference_key::isSignOutDue, true);
    withSecrets([secrets = secrets_] { return KeptIdentity::remove(*secrets); },
                [this, epoch = epoch_, known = std::exchange(user_, {})](const KeptIdentity::Look& removed) {
                    if (!removed.identity.user.empty() && removed.identity.user != known)
                        provider_->forget(removed.identity.user);
                    if (epoch == epoch_) cleared(removed.status == SecretStatus::notFound);
                });
}

void AppleAuthManager::cleared(bool isCertain)
{
    isClearing_ = false;
    if (isCertain)
        preferences_->set(preference_key::isSignOutDue, false);
    else
        log_->warning(category, "The secret store did not remove who was signed in, being locked, absent or "
                                "slow: the next start of this program tries again.");
    preferences_->setText(preference_key::signedInSince, "");
    isUnread.set(false);
    isUnconfirmed.set(false);
    isSignedIn.set(false);
    userDisplayName.set(std::nullopt);
    userEmail.set(std::nullopt);
    signedInSince.set(std::nullopt);
}

std::optional<Date> AppleAuthManager::keptSince() const
{
    const auto text = preferences_->text(preference_key::signedInSince);
    std::int64_t seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = error == std::errc{} && end == text.data() + text.size();
    const Date since{static_cast<double>(seconds)};
    if (!isNumber || since < Date{} || since > clock_->now() + duration::day) return std::nullopt;
    return since;
}

} // namespace velmora
