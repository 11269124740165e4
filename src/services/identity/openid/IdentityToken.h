// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"
#include "identity/openid/Answers.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::openid {

/// A signed statement of a provider's on who the user is (a JSON Web Token). Nothing in it counts before it
/// is verified.
class IdentityToken {
public:
    /// What it must say.
    struct Expected {
        std::string issuer{};
        std::string clientID{};
        std::optional<std::string> nonce{}; ///< that of the sign-in; nullopt at a refresh, where none is sent
        std::string accessToken{};          ///< that came with it: compared where the token speaks of it
        Date now{};
    };
    /// How far two clocks may be apart.
    static constexpr double clockSkew = 2 * duration::minute;

    /// `invalid` unless it is of the outer form of a token, `signature` where it is signed in no way that is
    /// accepted: RS256, ES256 and PS256 are.
    static Read<IdentityToken> parse(std::string_view text);

    /// Whether one of these keys may have signed it. Where none may, the provider may have changed its keys.
    bool hasKey(const std::vector<ProviderKey>& keys) const;

    /// Whom it is about. `signature` where no key fits or the signature is wrong; `invalid` where it is
    /// signed, but not for this client, this sign-in or this time.
    Read<UserInfo> verified(const std::vector<ProviderKey>& keys, const Expected& expected) const;

private:
    IdentityToken() = default;

    bool fits(const ProviderKey& key) const;

    std::string text_;
    std::string algorithm_;
    std::string keyID_; ///< empty: not told
};

} // namespace velmora::openid
