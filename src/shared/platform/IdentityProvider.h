// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace velmora {

/// The identity provider that a person, or their organisation, has chosen: OpenID Connect.
struct IdentitySource {
    std::string issuer{};   ///< URL; empty: none was chosen
    std::string clientID{}; ///< under which the provider knows Velmora
    /// More of the authorization request, as a URL has it: "access_type=offline". Some providers want one for
    /// a sign-in that outlives a restart.
    std::string parameters{};

    friend bool operator==(const IdentitySource&, const IdentitySource&) = default;
};

/// What went wrong with an identity provider.
enum class IdentityFault : std::uint8_t {
    canceled, ///< by the user, here or at the provider
    noProvider,
    noModule,  ///< the part of Velmora that speaks to providers is not installed
    noBrowser, ///< none could be opened
    noListener,
    unreachable, ///< no connection, a certificate that is not trusted, or an answer that says "later"
    expired,     ///< nobody came back from the browser in time
    refused,     ///< the provider said so
    client,      ///< it does not know this client, or not for this
    revoked,     ///< it no longer honours what it gave
    invalid,     ///< its answer is not what it must be
    signature,   ///< nor its token
};

/// As in the error domain that a sign-in's callers know: 1001 is the one that is not told.
struct IdentityError {
    static constexpr int canceled = 1001;
    static constexpr int failed = 1004;

    int code = failed;
    std::string localizedDescription{};
};

/// What a sign-in has brought. Texts are valid UTF-8 on one line.
struct IdentityCredential {
    std::string user; ///< the stable identifier
    std::optional<std::string> givenName{};
    std::optional<std::string> familyName{};
    std::optional<std::string> email{};
};
/// One that is no identity.
struct OtherCredential {};

/// Says who the user is. Main thread only; answers come on any thread, once each, in bounded time, never from
/// inside the call, and not at all once this has gone.
class IdentityProvider {
public:
    enum class CredentialState : std::uint8_t {
        authorized,
        revoked,
        notFound,    ///< nothing is kept for that user
        transferred, ///< the identifier now is another's
        unknown,     ///< the provider did not tell
    };
    enum class Scope : std::uint8_t { fullName, email };
    /// What the desktop gives for a click, so that the window which it opens may take the focus; empty: none.
    using PresentationAnchor = std::string;
    using Result = std::variant<IdentityCredential, OtherCredential, IdentityError>;
    /// Gives a client's secret, or an empty text. Asked where it may take seconds.
    using ClientSecret = std::function<std::string()>;

    virtual ~IdentityProvider() = default;

    /// Which provider all further calls mean. What is under way goes on with the one before.
    virtual void use(const IdentitySource& source, ClientSecret secret) = 0;

    /// Has the user sign in, by a window of the provider's. One at a time: it is for the caller to see to
    /// that.
    virtual void performRequest(const std::array<Scope, 2>& scopes, const PresentationAnchor& anchor,
                                std::function<void(Result)> completed) = 0;
    /// Ends the request under way, which completes as canceled.
    virtual void cancelRequest() = 0;

    /// Asks the provider whether that user's sign-in still holds.
    virtual void credentialState(const std::string& user,
                                 std::function<void(CredentialState state)> answered) = 0;

    /// Forgets what is kept for that user, and has the provider forget it if it answers. Answers nothing.
    virtual void forget(const std::string& user) = 0;
};

} // namespace velmora
