// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/IdentityToken.h"

#include "base/Handle.h"
#include "identity/openid/Encoding.h"
#include "identity/openid/Json.h"
#include "identity/openid/Memory.h"

#include <algorithm>
#include <array>
#include <cjose/cjose.h>
#include <utility>

namespace velmora::openid {

namespace {

using Key = Handle<cjose_jwk_t, cjose_jwk_release>;
using Signed = Handle<cjose_jws_t, cjose_jws_release>;

IdentityProblem invalid(std::string detail)
{
    return {IdentityFault::invalid, "The identity token " + std::move(detail) + "."};
}

IdentityProblem forged(std::string detail)
{
    return {IdentityFault::signature, "The identity token " + std::move(detail) + "."};
}

bool isAccepted(std::string_view algorithm)
{
    constexpr std::array<std::string_view, 3> accepted{"RS256", "ES256", "PS256"};
    return std::ranges::find(accepted, algorithm) != accepted.end();
}

/// What is between the dots; nullopt unless there are two of them.
std::optional<std::array<std::string_view, 3>> partsOf(std::string_view text)
{
    const auto first = text.find('.');
    const auto second = first == text.npos ? text.npos : text.find('.', first + 1);
    if (second == text.npos || text.find('.', second + 1) != text.npos) return std::nullopt;
    return std::array{text.substr(0, first), text.substr(first + 1, second - first - 1),
                      text.substr(second + 1)};
}

/// What was signed, if it was with that key.
std::optional<std::string> signedText(const std::string& token, const ProviderKey& key)
{
    const Key imported(cjose_jwk_import(key.json.data(), key.json.size(), nullptr));
    const Signed parsed(cjose_jws_import(token.data(), token.size(), nullptr));
    std::uint8_t* bytes = nullptr;
    std::size_t count = 0;
    if (!imported || !parsed || !cjose_jws_verify(parsed.get(), imported.get(), nullptr) ||
        !cjose_jws_get_plaintext(parsed.get(), &bytes, &count, nullptr))
        return std::nullopt;
    return std::string(reinterpret_cast<const char*>(bytes), count);
}

std::vector<std::string> audienceOf(const Json& claims)
{
    if (const auto one = claims.text("aud")) return {std::string(*one)};
    return claims.texts("aud").value_or(std::vector<std::string>{});
}

/// Among several audiences one has to be named that it was made for.
bool isForClient(const Json& claims, const std::string& clientID)
{
    const auto audience = audienceOf(claims);
    if (std::ranges::find(audience, clientID) == audience.end()) return false;
    if (claims.has("azp")) return claims.text("azp") == clientID;
    return audience.size() == 1;
}

/// Empty, or what is wrong about its times.
std::string flawInTime(const Json& claims, Date now)
{
    const auto issued = claims.number("iat"), ends = claims.number("exp"), begins = claims.number("nbf");
    const double seconds = now.unixSeconds();
    if (!issued || !ends || (claims.has("nbf") && !begins))
        return "does not say when it was made or how long it holds";
    if (*ends + IdentityToken::clockSkew <= seconds)
        return "has expired, unless this computer's clock is ahead";
    if (std::max(*issued, begins.value_or(*issued)) - IdentityToken::clockSkew > seconds)
        return "is from the future, unless this computer's clock is behind";
    return {};
}

/// Whether the access token is the one that it came with: the left half of its hash is in it.
bool isWith(const Json& claims, const std::string& accessToken)
{
    if (!claims.has("at_hash") || accessToken.empty()) return true;
    const auto digest = digestOf(accessToken);
    return claims.text("at_hash") ==
           base64Url({reinterpret_cast<const char*>(digest.data()), digest.size() / 2});
}

/// Empty, or what the token says against the expected.
std::string flawOf(const Json& claims, const IdentityToken::Expected& expected)
{
    if (claims.text("iss") != expected.issuer) return "is of another issuer";
    if (!isForClient(claims, expected.clientID)) return "is for another client";
    if (auto flaw = flawInTime(claims, expected.now); !flaw.empty()) return flaw;
    if (expected.nonce && !isSameSecret(claims.text("nonce").value_or(""), *expected.nonce))
        return "is of another sign-in (nonce)";
    if (!isWith(claims, expected.accessToken)) return "is of another access token (at_hash)";
    return {};
}

} // namespace

Read<IdentityToken> IdentityToken::parse(std::string_view text)
{
    constexpr std::size_t longest = 1 << 16;
    const auto parts = text.size() <= longest ? partsOf(text) : std::nullopt;
    const auto decoded = parts ? fromBase64Url((*parts)[0]) : std::nullopt;
    const auto header = decoded ? Json::parse(*decoded) : std::nullopt;
    if (!header) return invalid("is of no form that is known");
    const auto algorithm = header->text("alg").value_or("");
    if (!isAccepted(algorithm) || header->has("crit"))
        return forged("is signed in a way that is not accepted (RS256, ES256 and PS256 are)");
    if (header->has("kid") && !header->text("kid")) return invalid("names its key by no text");
    IdentityToken token;
    token.text_ = text;
    token.algorithm_ = algorithm;
    token.keyID_ = header->text("kid").value_or("");
    return token;
}

bool IdentityToken::fits(const ProviderKey& key) const
{
    return (keyID_.empty() || keyID_ == key.id) && key.isRsa == (algorithm_ != "ES256") &&
           (key.algorithm.empty() || key.algorithm == algorithm_);
}

bool IdentityToken::hasKey(const std::vector<ProviderKey>& keys) const
{
    return std::ranges::any_of(keys, [this](const ProviderKey& key) { return fits(key); });
}

Read<UserInfo> IdentityToken::verified(const std::vector<ProviderKey>& keys, const Expected& expected) const
{
    wipeLibraryMemory();
    if (!hasKey(keys)) return forged("is signed with none of the provider's keys");
    std::optional<std::string> said;
    for (auto key = keys.begin(); key != keys.end() && !said; ++key) {
        if (fits(*key)) said = signedText(text_, *key);
    }
    if (!said) return forged("has a wrong signature");
    const auto claims = Json::parse(*said);
    if (!claims) return invalid("says nothing that is a JSON object");
    if (auto flaw = flawOf(*claims, expected); !flaw.empty()) return invalid(std::move(flaw));
    return readUserInfo(*said);
}

} // namespace velmora::openid
