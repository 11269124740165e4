// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/Answers.h"

#include "base/Text.h"
#include "base/Utf8.h"
#include "base/Wipe.h"
#include "identity/openid/Encoding.h"
#include "identity/openid/HttpClient.h"
#include "identity/openid/Json.h"

#include <algorithm>
#include <array>
#include <utility>

namespace velmora::openid {

namespace {

IdentityProblem invalid(std::string detail)
{
    return {IdentityFault::invalid, std::move(detail)};
}

bool isAscii(std::string_view text, std::size_t longest, char first = ' ')
{
    return text.size() <= longest &&
           std::ranges::all_of(text, [first](char c) { return c >= first && c <= '~'; });
}

/// The beginnings of UTF-8 that are blanks or show as nothing: U+00A0, U+00AD, U+2000 to U+200F, U+202F,
/// U+205F to U+2064, U+2800, U+3000, U+3164, U+FEFF and U+FFA0.
std::size_t blankLength(std::string_view text)
{
    if (text.starts_with(' ')) return 1;
    if (text.starts_with("\u00a0") || text.starts_with("\u00ad")) return 2;
    const auto character = text.substr(0, 3);
    const auto isWithin = [character](const char* first, const char* last) {
        return character >= first && character <= last;
    };
    constexpr std::array<std::string_view, 6> others{"\u202f", "\u2800", "\u3000",
                                                     "\u3164", "\ufeff", "\uffa0"};
    const bool isBlank = isWithin("\u2000", "\u200f") || isWithin("\u205f", "\u2064") ||
                         std::ranges::find(others, character) != others.end();
    return isBlank ? character.size() : 0;
}

bool showsAsNothing(std::string_view text)
{
    while (const auto blank = blankLength(text)) text.remove_prefix(blank);
    return text.empty();
}

/// What is shown to people; nullopt for nothing.
std::optional<std::string> shownText(const Json& json, const char* name)
{
    constexpr std::size_t longest = 200;
    const auto text = json.text(name);
    if (!text) return std::nullopt;
    // Cut first: what is left out of it later is never needed.
    const auto clean = printable(cleanUtf8(text->substr(0, 4 * longest)));
    auto shown = trimmed(utf8Prefix(clean, longest));
    if (showsAsNothing(shown)) return std::nullopt;
    return shown;
}

/// The address, empty where none is announced; nullopt where Velmora does not speak to it. A provider that is
/// itself reached by http on this computer may name such addresses. Any other one may not: its tokens would
/// go to whatever program listens on this computer.
std::optional<std::string> endpoint(const Json& json, const char* name, std::string_view issuer)
{
    if (!json.has(name)) return std::string();
    const auto text = json.text(name);
    const bool mayBeOpen = HttpClient::isEndpoint(issuer) && !HttpClient::isEncrypted(issuer);
    if (!text || !(mayBeOpen ? HttpClient::isEndpoint(*text) : HttpClient::isEncrypted(*text)))
        return std::nullopt;
    return std::string(*text);
}

/// A whole number in the alphabet of tokens, of that many bytes.
bool isNumber(std::optional<std::string_view> text, std::size_t least, std::size_t most)
{
    const auto bytes = text ? fromBase64Url(*text) : std::nullopt;
    return bytes && bytes->size() >= least && bytes->size() <= most;
}

std::string member(const Json& key, const char* name)
{
    return std::string(R"(,")") + name + R"(":")" + std::string(key.text(name).value_or("")) + '"';
}

/// The public part of an RSA key of 2048 to 8192 bits or of one on P-256, or empty.
std::string publicPart(const Json& key)
{
    const auto type = key.text("kty");
    if (type == "RSA" && isNumber(key.text("n"), 256, 1025) && isNumber(key.text("e"), 1, 8))
        return R"({"kty":"RSA")" + member(key, "n") + member(key, "e") + "}";
    if (type == "EC" && key.text("crv") == "P-256" && isNumber(key.text("x"), 32, 32) &&
        isNumber(key.text("y"), 32, 32))
        return R"({"kty":"EC","crv":"P-256")" + member(key, "x") + member(key, "y") + "}";
    return {};
}

/// Whether it is there for signatures, as far as the provider says.
bool isForSignatures(const Json& key)
{
    const auto uses = key.texts("key_ops");
    return (!key.has("use") || key.text("use") == "sig") &&
           (!key.has("key_ops") || (uses && std::ranges::find(*uses, "verify") != uses->end()));
}

std::optional<ProviderKey> keyFrom(const Json& json)
{
    constexpr std::size_t longestName = 500;
    ProviderKey key{.id = std::string(json.text("kid").value_or("")),
                    .algorithm = std::string(json.text("alg").value_or("")),
                    .isRsa = json.text("kty") == "RSA",
                    .json = publicPart(json)};
    if (key.json.empty() || !isForSignatures(json) || key.id.size() > longestName) return std::nullopt;
    return key;
}

/// Puts the token's text there, if there is one; false for what could not be sent again.
bool take(const Json& json, const char* name, std::string& place)
{
    constexpr std::size_t longest = 1 << 16;
    if (!json.has(name)) return true;
    const auto text = json.text(name);
    if (!text || !isAscii(*text, longest, '!')) return false;
    place = *text;
    return true;
}

bool isBearer(std::string_view type)
{
    constexpr std::string_view bearer = "bearer";
    return std::ranges::equal(type, bearer, {}, [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; });
}

} // namespace

Read<Discovery> readDiscovery(std::string_view body)
{
    const auto json = Json::parse(body);
    if (!json) return invalid("What the provider announces is no JSON object.");
    Discovery found{.issuer = std::string(json->text("issuer").value_or("")),
                    .sendsIssuer = json->isTrue("authorization_response_iss_parameter_supported"),
                    .scopes = json->texts("scopes_supported"),
                    .challengeMethods = json->texts("code_challenge_methods_supported"),
                    .clientAuthentication = json->texts("token_endpoint_auth_methods_supported")};
    struct Address {
        const char* name;
        std::string& place;
        bool isNeeded;
    };
    for (const auto& address : {Address{"authorization_endpoint", found.authorizationEndpoint, true},
                                {"token_endpoint", found.tokenEndpoint, true},
                                {"jwks_uri", found.keys, true},
                                {"userinfo_endpoint", found.userinfoEndpoint, false},
                                {"revocation_endpoint", found.revocationEndpoint, false}}) {
        const auto url = endpoint(*json, address.name, found.issuer);
        if (!url || (url->empty() && address.isNeeded))
            return invalid("What the provider announces has no " + std::string(address.name) +
                           " with https, or with http on this computer if its issuer is there, too.");
        address.place = *url;
    }
    return found;
}

Read<std::vector<ProviderKey>> readKeys(std::string_view body)
{
    constexpr std::size_t most = 100;
    const auto json = Json::parse(body);
    const auto listed = json ? json->objects("keys") : std::nullopt;
    if (!listed) return invalid("The provider's list of keys is none.");
    std::vector<ProviderKey> keys;
    for (const auto& one : *listed) {
        if (auto key = keyFrom(one); key && keys.size() < most) keys.push_back(std::move(*key));
    }
    return keys;
}

Read<TokenAnswer> readTokens(std::string_view body)
{
    const auto json = Json::parse(body);
    if (!json) return invalid("The provider's answer with the tokens is no JSON object.");
    TokenAnswer found;
    const bool areTexts = take(*json, "access_token", found.accessToken) &&
                          take(*json, "refresh_token", found.refreshToken) &&
                          take(*json, "id_token", found.identityToken);
    if (areTexts && !found.accessToken.empty() && isBearer(json->text("token_type").value_or("")))
        return found;
    for (auto* token : {&found.accessToken, &found.refreshToken, &found.identityToken}) wipe(*token);
    return invalid(
        "The provider's answer has no access token of the type Bearer, or a token that is no text.");
}

std::string readRefreshToken(std::string_view body)
{
    std::string token;
    if (const auto json = Json::parse(body)) static_cast<void>(take(*json, "refresh_token", token));
    return token;
}

Read<UserInfo> readUserInfo(std::string_view body)
{
    constexpr std::size_t longestSubject = 255; // as the standard has it
    const auto json = Json::parse(body);
    if (!json) return invalid("What the provider says of the user is no JSON object.");
    const auto subject = json->text("sub");
    if (!subject || subject->empty() || !isAscii(*subject, longestSubject))
        return invalid(
            "What the provider says of the user has no identifier (sub) of 1 to 255 ASCII characters.");
    return UserInfo{.subject = std::string(*subject),
                    .givenName = shownText(*json, "given_name"),
                    .familyName = shownText(*json, "family_name"),
                    .email = shownText(*json, "email")};
}

Read<ErrorAnswer> readError(std::string_view body)
{
    constexpr std::size_t longest = 100;
    const auto json = Json::parse(body);
    const auto error = json ? json->text("error") : std::nullopt;
    if (!error || error->empty() || !isAscii(*error, longest))
        return invalid("The provider gave an answer of another kind than a refusal.");
    return ErrorAnswer{.error = std::string(*error),
                       .description = shownText(*json, "error_description").value_or("")};
}

} // namespace velmora::openid
