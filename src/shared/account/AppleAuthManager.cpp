// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "account/AppleAuthManager.h"

#include "account/KeychainHelper.h"
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

std::optional<std::string> read(const char* account)
{
    return KeychainHelper::shared().read(AppleAuthManager::keychainService, account);
}

void save(const std::string& value, const char* account)
{
    KeychainHelper::shared().save(value, AppleAuthManager::keychainService, account);
}

bool forgetStored()
{
    for (const auto* account :
         {AppleAuthManager::userIDKey, AppleAuthManager::displayNameKey, AppleAuthManager::emailKey})
        KeychainHelper::shared().remove(AppleAuthManager::keychainService, account);
    return true;
}

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
    const auto look = []() -> std::optional<Identity> {
        const auto user = read(userIDKey);
        if (!user) return std::nullopt;
        return Identity{.user = *user, .name = read(displayNameKey), .email = read(emailKey)};
    };
    withSecrets(look, [this, epoch = epoch_](const std::optional<Identity>& kept) {
        if (epoch == epoch_) restored(kept);
    });
}

void AppleAuthManager::restored(const std::optional<Identity>& kept)
{
    if (!kept) return;
    user_ = kept->user;
    userDisplayName.set(kept->name);
    userEmail.set(kept->email);
    signedInSince.set(keptSince());
    isUnconfirmed.set(true);
    checkAgain();
}

void AppleAuthManager::checkAgain()
{
    if (!isUnconfirmed.get() || isChecking.get()) return;
    isChecking.set(true);
    nextCheck_.reset();
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
    const auto done = lifetime_.guard([this](const IdentityProvider::Result& result) { completed(result); });
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

void AppleAuthManager::completed(const IdentityProvider::Result& result)
{
    if (const auto* credential = std::get_if<IdentityCredential>(&result)) return handle(*credential);
    if (const auto* error = std::get_if<IdentityError>(&result)) return failed(*error);
    isLoading.set(false);
}

/// A provider may tell name and address at the first sign-in alone: what is kept of the same user stands for
/// what it leaves out.
void AppleAuthManager::handle(const IdentityCredential& credential)
{
    const auto keep = [credential] {
        auto name = fullName(credential);
        auto email = credential.email;
        const bool isSameUser = read(userIDKey).value_or(credential.user) == credential.user;
        if (!name && isSameUser) name = read(displayNameKey);
        if (!email && isSameUser) email = read(emailKey);
        forgetStored();
        save(credential.user, userIDKey);
        if (name) save(*name, displayNameKey);
        if (email) save(*email, emailKey);
        return Identity{.user = credential.user, .name = name, .email = email};
    };
    withSecrets(keep, [this, epoch = ++epoch_](const Identity& identity) {
        if (epoch == epoch_) return signedIn(identity);
        provider_->forget(identity.user); // signed out meanwhile
        isLoading.set(false);
    });
}

void AppleAuthManager::signedIn(const Identity& identity)
{
    if (!user_.empty() && user_ != identity.user) provider_->forget(user_);
    user_ = identity.user;
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
    isRevoked.set(false);
    if (!user_.empty()) provider_->forget(user_);
    clearStoredCredentials();
    log_->info(category, "Apple Sign In: user signed out.");
}

void AppleAuthManager::clearStoredCredentials()
{
    ++epoch_;
    nextCheck_.reset();
    isChecking.set(false);
    withSecrets(forgetStored, [this, epoch = epoch_](bool) {
        if (epoch != epoch_) return; // somebody has signed in meanwhile
        user_.clear();
        preferences_->setText(preference_key::signedInSince, "");
        isUnconfirmed.set(false);
        isSignedIn.set(false);
        userDisplayName.set(std::nullopt);
        userEmail.set(std::nullopt);
        signedInSince.set(std::nullopt);
    });
}

std::optional<Date> AppleAuthManager::keptSince() const
{
    const auto text = preferences_->text(preference_key::signedInSince);
    std::int64_t seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return Date{static_cast<double>(seconds)};
}

} // namespace velmora
