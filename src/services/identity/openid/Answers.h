// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "identity/OpenIDClient.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// What a provider's JSON answers say. A reader takes any bytes, of at most HttpClient::maximumBody: what is
/// not JSON, nested too deep, or lacks what it must have is `invalid`, with a line for the log. Members that
/// nobody asked for are passed over. Texts are valid UTF-8 without control characters.
namespace velmora::openid {

template <typename T>
using Read = std::variant<T, IdentityProblem>;

/// What the provider announces under its issuer. Every address is one that HttpClient speaks to,
/// encrypted unless the issuer is not.
struct Discovery {
    std::string issuer{};
    std::string authorizationEndpoint{};
    std::string tokenEndpoint{};
    std::string keys{};               ///< address of the key set
    std::string userinfoEndpoint{};   ///< empty: none
    std::string revocationEndpoint{}; ///< empty: none
    bool sendsIssuer = false;         ///< the redirect names the issuer (RFC 9207)
    // Where the provider does not say, nothing.
    std::optional<std::vector<std::string>> scopes{};
    std::optional<std::vector<std::string>> challengeMethods{};     ///< of PKCE: "S256", "plain"
    std::optional<std::vector<std::string>> clientAuthentication{}; ///< "client_secret_basic", "none", ...
};
Read<Discovery> readDiscovery(std::string_view body);

/// A provider's public key that a token may be signed with: RSA, or EC on P-256. Others are passed over.
struct ProviderKey {
    std::string id{};        ///< kid; empty: none
    std::string algorithm{}; ///< the only one it is for; empty: any of its type
    bool isRsa = false;
    std::string json{}; ///< its public part, as a JSON Web Key
};
/// At most 100 keys are taken.
Read<std::vector<ProviderKey>> readKeys(std::string_view body);

/// The answer of the token endpoint. Wipe what is a secret when it is needed no more.
struct TokenAnswer {
    std::string accessToken{};
    std::string refreshToken{};  ///< empty: none
    std::string identityToken{}; ///< empty: none
};
/// The access token is of the type "Bearer".
Read<TokenAnswer> readTokens(std::string_view body);

/// The refresh token alone, whatever the rest of that answer is; empty: none that could be used. To be wiped.
std::string readRefreshToken(std::string_view body);

/// Who the user is. What is missing, no text, or shows as nothing is nullopt.
struct UserInfo {
    std::string subject{}; ///< 1 to 255 characters of printable ASCII
    std::optional<std::string> givenName{};
    std::optional<std::string> familyName{};
    std::optional<std::string> email{};
};
Read<UserInfo> readUserInfo(std::string_view body);

/// Why a provider has refused, as OAuth says it.
struct ErrorAnswer {
    std::string error{};       ///< "invalid_grant"
    std::string description{}; ///< for the log: one printable line of at most 200 bytes; may be empty
};
/// `invalid` where it is no such answer: of a captive portal, a proxy, a server in trouble.
Read<ErrorAnswer> readError(std::string_view body);

} // namespace velmora::openid
