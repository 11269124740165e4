// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Mutex.h"
#include "base/Wipe.h"
#include "platform/IdentityProvider.h"
#include "platform/Log.h"
#include "platform/SecretStore.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace velmora {

/// What a sign-in leaves behind, so that a later run can have it confirmed.
struct KeptSignIn {
    IdentitySource source{};    ///< without the parameters
    std::string refreshToken{}; ///< empty: the provider gave none that lasts

    ~KeptSignIn() { wipe(refreshToken); }
};

/// The sign-ins that are kept in the secret store, each under the user's identifier. What the store does not
/// take is kept here for this run, to be offered again. Any thread; calls block as those of the store do,
/// one after the other.
class KeptSignIns {
public:
    static constexpr auto service = "app.velmora.oidc";

    /// Success: there is something that cannot be read. The log says so.
    using Found = std::variant<KeptSignIn, SecretStatus>;
    /// How often a user has been forgotten: what was learnt before the last time is not kept.
    using Forgets = std::uint64_t;

    /// Called where the store does not take something, on that thread. Set before the first call.
    std::function<void()> onRefusal{};

    KeptSignIns(std::shared_ptr<SecretStore> store, std::shared_ptr<Log> log);

    Found find(const std::string& user);
    /// In place of what was kept for that user. Where the store does not take it the log says so. False, and
    /// nothing is kept, where the user was forgotten since.
    bool keep(const std::string& user, const KeptSignIn& signIn, Forgets known);
    /// The same without the store, where that has just failed to answer.
    void putOff(const std::string& user, const KeptSignIn& signIn, Forgets known);

    /// Offers the store once more what it did not take. Whether it has taken all.
    bool offerAgain();
    bool hasAllTaken(); ///< does not block, like the next two

    Forgets forgets(const std::string& user);
    /// From now on there is nothing for that user. The store is told by `removeForgotten`.
    void forget(const std::string& user);
    /// What was kept for a user who was forgotten and has not signed in again.
    std::optional<KeptSignIn> removeForgotten(const std::string& user);

private:
    struct Memory {
        Forgets forgets = 0;
        bool isForgotten = false; ///< and has not signed in since
    };

    void remember(const std::string& user, const KeptSignIn& signIn, Forgets known);
    std::optional<KeptSignIn> refused(const std::string& user);
    SecretStatus read(const std::string& user, std::optional<KeptSignIn>& signIn);
    bool store(const std::string& user, const KeptSignIn& signIn);

    std::shared_ptr<SecretStore> store_;
    std::shared_ptr<Log> log_;
    Mutex turn_; ///< of who uses the store; before the other
    Mutex mutex_;
    std::map<std::string, KeptSignIn> refused_ VELMORA_GUARDED_BY(mutex_); ///< by the store
    std::map<std::string, Memory> users_ VELMORA_GUARDED_BY(mutex_);
};

} // namespace velmora
