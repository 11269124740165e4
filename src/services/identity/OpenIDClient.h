// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Wipe.h"
#include "platform/IdentityProvider.h"

#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace velmora {

struct IdentityProblem {
    IdentityFault fault = IdentityFault::invalid;
    std::string detail{}; ///< a sentence for the log: printable, never a token, a code or a secret
};

/// One conversation with an OpenID provider. Calls block, at most for the time that each says; all but
/// `cancel` come from one thread.
class OpenIDClient {
public:
    /// Shows the page to the user; false where no browser could be opened.
    using OpenBrowser = std::function<bool(const std::string& url)>;
    /// Stores a token before anything else happens: with some providers the one before is void by now, and
    /// using it would end the sign-in.
    using Keep = std::function<void(const std::string& refreshToken)>;

    struct SignedIn {
        IdentityCredential credential{};
        std::string refreshToken{}; ///< empty: the provider has given none

        ~SignedIn() { wipe(refreshToken); }
    };

    virtual ~OpenIDClient() = default;

    /// The user signs in, by the authorization code flow with PKCE. At most 5 minutes for the user, and one
    /// for the provider.
    virtual std::variant<SignedIn, IdentityProblem> signIn(const OpenBrowser& openBrowser) = 0;

    /// Reads what the provider announces, to which nothing of the user's is sent; what follows knows it then.
    /// At most 15 seconds.
    virtual std::optional<IdentityProblem> reach() = 0;

    /// Uses the token once, and tells whose it is: the identifier of the user. `revoked` where the provider
    /// no longer honours it. At most a minute.
    virtual std::variant<std::string, IdentityProblem> refresh(const std::string& refreshToken,
                                                               const Keep& keep) = 0;

    /// Has the provider forget the token, as far as it can be reached and knows how. At most 30 seconds.
    virtual void revoke(const std::string& refreshToken) = 0;

    /// Ends what is under way and all that follows, as canceled. Any thread.
    virtual void cancel() = 0;
};

} // namespace velmora
