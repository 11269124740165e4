// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Text.h"
#include "base/Utf8.h"
#include "identity/openid/Encoding.h"
#include "identity/openid/HttpClient.h"
#include "identity/openid/IdentityToken.h"
#include "identity/openid/RedirectRequest.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

// Whatever a provider answers, reading it ends, and what is found keeps to what the readers promise: texts
// that show on one line, tokens that fit in a header, addresses that the client speaks to, keys that can be
// used.

namespace {

using namespace velmora;
using namespace velmora::openid;

void require(bool isSo)
{
    if (!isSo) std::abort();
}

bool isPrintableAscii(std::string_view text)
{
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

template <typename T, typename Check>
void check(const Read<T>& result, const Check& isAsPromised)
{
    if (const auto* problem = std::get_if<IdentityProblem>(&result))
        require(isUtf8(problem->detail) && printable(problem->detail) == problem->detail &&
                !problem->detail.empty());
    else
        require(isAsPromised(std::get<T>(result)));
}

bool isShown(const std::optional<std::string>& text)
{
    return !text || (isUtf8(*text) && printable(*text) == *text && !text->empty() && text->size() <= 200);
}

bool isUser(const UserInfo& user)
{
    return !user.subject.empty() && isPrintableAscii(user.subject) && isShown(user.givenName) &&
           isShown(user.familyName) && isShown(user.email);
}

bool isDiscovery(const Discovery& found)
{
    const auto isOne = [](const std::string& url) { return HttpClient::isEndpoint(url); };
    return isOne(found.authorizationEndpoint) && isOne(found.tokenEndpoint) && isOne(found.keys) &&
           (found.userinfoEndpoint.empty() || isOne(found.userinfoEndpoint));
}

/// On P-256, so that signatures are wrong soon.
const std::vector<ProviderKey> knownKeys = std::get<std::vector<ProviderKey>>(
    readKeys(R"({"keys":[{"kty":"EC","crv":"P-256","x":"f83OJ3D2xF1Bg8vub9tLe1gHMzV76e8Tus9uPHvRVEU",)"
             R"("y":"x_FEzRu9m36HLN_tue659LNpXW6pCyStikYjKIWI5a0"}]})"));

/// The signature of bytes by chance is never right.
bool isNoKnownToken(const IdentityToken& token, const std::vector<ProviderKey>& more)
{
    const IdentityToken::Expected expected{.issuer = "https://a", .clientID = "velmora"};
    check(token.verified(more, expected), isUser);
    return std::holds_alternative<IdentityProblem>(token.verified(knownKeys, expected));
}

/// All readers on these bytes.
void readAll(std::string_view text)
{
    std::vector<ProviderKey> keys;
    check(readKeys(text), [&keys](const std::vector<ProviderKey>& found) {
        keys = found;
        return found.size() <= 100;
    });
    check(readDiscovery(text), isDiscovery);
    check(readTokens(text), [](const TokenAnswer& tokens) {
        return !tokens.accessToken.empty() && isPrintableAscii(tokens.accessToken + tokens.refreshToken);
    });
    require(isPrintableAscii(readRefreshToken(text)));
    check(readUserInfo(text), isUser);
    check(readError(text), [](const ErrorAnswer& answer) {
        return isPrintableAscii(answer.error) && printable(answer.description) == answer.description;
    });
    const auto isNoToken = [&keys](const IdentityToken& token) { return isNoKnownToken(token, keys); };
    check(IdentityToken::parse(text), isNoToken);
    check(IdentityToken::parse(base64Url(text) + ".e30.AAAA"), isNoToken); // as its header
}

using Json = nlohmann::ordered_json;
const Json members = Json::parse(R"({"issuer": "https://a", "authorization_endpoint": "https://a/a",
    "token_endpoint": "https://a/t", "jwks_uri": "https://a/k", "scopes_supported": ["openid"],
    "access_token": "a", "token_type": "Bearer", "refresh_token": "r", "sub": "u", "given_name": "g",
    "email": "e", "error": "invalid_grant", "error_description": "d", "alg": "ES256", "kid": "k",
    "keys": []})");
const Json keyMembers = Json::parse(R"({"kty": "EC", "crv": "P-256",
    "x": "f83OJ3D2xF1Bg8vub9tLe1gHMzV76e8Tus9uPHvRVEU", "y": "x_FEzRu9m36HLN_tue659LNpXW6pCyStikYjKIWI5a0",
    "n": "AQAB", "e": "AQAB", "use": "sig", "key_ops": ["verify"], "alg": "ES256", "kid": "k"})");

/// An object of these members, one of which says something else.
std::string objectOf(const Json& all, std::size_t which, std::string_view value)
{
    std::string text;
    for (const auto& [name, usual] : all.items())
        text += (text.empty() ? "{\"" : ",\"") + name +
                "\":" + (which-- == 0 ? std::string(value) : usual.dump());
    return text + "}";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    readAll(text);
    if (size > 0) {
        const std::size_t which = bytes[0] % (members.size() + keyMembers.size());
        const auto value = text.substr(1);
        readAll(objectOf(members, which, value));
        readAll(R"({"keys":[)" + objectOf(keyMembers, which - members.size(), value) + "]}");
    }
    const auto redirect = readRedirect(text, "state");
    if (std::holds_alternative<Redirect>(redirect)) require(text.find("state=") != text.npos);
    const auto decoded = fromBase64Url(text);
    require(!decoded || base64Url(*decoded) == text);
    return 0;
}
