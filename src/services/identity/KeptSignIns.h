// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Wipe.h"
#include "platform/IdentityProvider.h"
#include "platform/Log.h"
#include "platform/SecretStore.h"

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
/// take is kept here for this run, and offered to it again. One thread at a time; calls block as those of the
/// store do.
class KeptSignIns {
public:
    static constexpr auto service = "app.velmora.oidc";

    /// Success is never told: then there is a sign-in.
    using Found = std::variant<KeptSignIn, SecretStatus>;

    KeptSignIns(std::shared_ptr<SecretStore> store, std::shared_ptr<Log> log);

    Found find(const std::string& user);
    /// In place of what was kept for that user. Where the store does not take it the log says so.
    void keep(const std::string& user, const KeptSignIn& signIn);
    void remove(const std::string& user);

private:
    std::shared_ptr<SecretStore> store_;
    std::shared_ptr<Log> log_;
    std::map<std::string, KeptSignIn> refused_; ///< by the store
};

} // namespace velmora
