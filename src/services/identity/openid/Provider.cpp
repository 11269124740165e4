// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/Provider.h"

#include "base/Text.h"
#include "base/Utf8.h"
#include "base/Wipe.h"
#include "identity/openid/Encoding.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace velmora::openid {

namespace {

constexpr std::size_t longestShown = 200;
constexpr int ok = 200, badRequest = 400, requestTimeout = 408, tooManyRequests = 429, serverError = 500;

[[noreturn]] void fail(IdentityFault fault, std::string detail)
{
    throw ProviderFailure({fault, std::move(detail)});
}

template <typename T>
T valueOf(Read<T> read)
{
    if (auto* problem = std::get_if<IdentityProblem>(&read)) throw ProviderFailure(std::move(*problem));
    return std::get<T>(std::move(read));
}

/// A page of the network's own, as it is shown to who has not logged in to it, rather than of the provider's.
bool isWebPage(std::string_view body)
{
    const auto first = body.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    return first != body.npos && body[first] == '<';
}

/// Of an answer that is not what was asked for, and that says no more than this.
[[noreturn]] void failFor(const HttpAnswer& answer, const std::string& url)
{
    const bool isLater = answer.status >= serverError || answer.status == tooManyRequests ||
                         answer.status == requestTimeout || isWebPage(answer.body);
    fail(isLater ? IdentityFault::unreachable : IdentityFault::invalid,
         url + " answers with the status " + std::to_string(answer.status) +
             (isWebPage(answer.body) ? " and a web page." : "."));
}

} // namespace

IdentityFault faultOfError(const std::string& error)
{
    constexpr std::array<std::string_view, 2> later{"temporarily_unavailable", "server_error"};
    constexpr std::array<std::string_view, 2> client{"invalid_client", "unauthorized_client"};
    if (std::ranges::count(later, error) > 0) return IdentityFault::unreachable;
    return std::ranges::count(client, error) > 0 ? IdentityFault::client : IdentityFault::refused;
}

/// As what the client shows itself: a public one by its name, one with a secret in the way that the provider
/// announces, by a header (which is the common one) or within the form.
struct Provider::Authentication {
    std::string header{};
    std::optional<std::string> clientID{}, secret{}; ///< within the form

    ~Authentication()
    {
        wipe(header);
        if (secret) wipe(*secret);
    }
};

Tokens::~Tokens()
{
    wipe(accessToken);
    wipe(refreshToken);
    wipe(identityToken);
}

Provider::Provider(IdentityAccess access, std::function<Date()> now)
    : access_(std::move(access)), now_(std::move(now))
{
}

Provider::Authentication Provider::authentication()
{
    auto secret = access_.secret ? access_.secret() : std::string();
    const Wiped wiped(secret);
    const auto& name = access_.source.clientID;
    if (secret.empty()) return {.clientID = name};
    const auto& ways = discovery().clientAuthentication;
    const auto has = [&ways](const char* way) { return ways && std::ranges::count(*ways, way) > 0; };
    if (has("client_secret_post") && !has("client_secret_basic")) return {.clientID = name, .secret = secret};
    auto encoded = percentEncoded(secret), both = percentEncoded(name) + ":" + encoded, coded = base64(both);
    const Wiped wipedToo[] = {Wiped(encoded), Wiped(both), Wiped(coded)};
    return {.header = "Basic " + coded};
}

/// Whatever its status, the answer is the provider's.
HttpAnswer Provider::ask(HttpRequest request)
{
    const Wiped wiped(request.authorization);
    auto answer = http_.exchange(request, end);
    if (request.form) wipe(*request.form);
    return valueOf<HttpAnswer>(std::move(answer));
}

/// The body of a page that has to be there.
std::string Provider::page(const std::string& url, std::string authorization)
{
    auto answer = ask({.url = url, .authorization = std::move(authorization)});
    if (answer.status != ok || isWebPage(answer.body)) failFor(answer, url);
    return std::move(answer.body);
}

const Discovery& Provider::discovery()
{
    if (discovery_) return *discovery_;
    const auto& issuer = access_.source.issuer;
    const auto place = issuer.substr(0, issuer.size() - (issuer.ends_with('/') ? 1 : 0));
    auto found = valueOf(readDiscovery(page(place + "/.well-known/openid-configuration")));
    if (found.issuer != issuer)
        fail(IdentityFault::invalid, "The provider at " + issuer + " announces itself as another one: " +
                                         printable(cleanUtf8(utf8Prefix(found.issuer, longestShown))) + ".");
    const auto& challenges = found.challengeMethods;
    if (challenges && std::ranges::count(*challenges, "S256") == 0)
        fail(IdentityFault::invalid, "The provider at " + issuer +
                                         " does not know S256, the way in which Velmora "
                                         "protects a sign-in (PKCE).");
    return discovery_.emplace(std::move(found));
}

Tokens Provider::exchangeCode(const std::string& code, const std::string& verifier,
                              const std::string& redirectAddress)
{
    const auto& url = discovery().tokenEndpoint;
    const auto client = authentication();
    return tokensFrom(ask({.url = url,
                           .form = formEncoded({{"grant_type", "authorization_code"},
                                                {"code", code},
                                                {"redirect_uri", redirectAddress},
                                                {"code_verifier", verifier},
                                                {"client_id", client.clientID},
                                                {"client_secret", client.secret}}),
                           .authorization = client.header}),
                      IdentityFault::refused);
}

Tokens Provider::renew(const std::string& refreshToken, const OpenIDClient::Keep& keep)
{
    const auto& url = discovery().tokenEndpoint;
    const auto client = authentication();
    auto answer = ask({.url = url,
                       .form = formEncoded({{"grant_type", "refresh_token"},
                                            {"refresh_token", refreshToken},
                                            {"client_id", client.clientID},
                                            {"client_secret", client.secret}}),
                       .authorization = client.header});
    const Wiped wiped(answer.body);
    auto successor = answer.status == ok ? readRefreshToken(answer.body) : std::string();
    const Wiped alsoWiped(successor);
    if (!successor.empty() && successor != refreshToken) keep(successor);
    return tokensFrom(std::move(answer), IdentityFault::revoked);
}

Tokens Provider::tokensFrom(HttpAnswer answer, IdentityFault whenVoid)
{
    const Wiped wiped(answer.body);
    const auto& url = discovery().tokenEndpoint;
    if (answer.status == ok && !isWebPage(answer.body)) return Tokens(valueOf(readTokens(answer.body)));
    const auto read = readError(answer.body);
    const auto* const refusal = std::get_if<ErrorAnswer>(&read);
    const bool isRefused = answer.status >= badRequest && answer.status < serverError &&
                           answer.status != tooManyRequests && answer.status != requestTimeout;
    if (!refusal || !isRefused) failFor(answer, url);
    const bool isVoid = refusal->error == "invalid_grant" && answer.status == badRequest;
    fail(isVoid ? whenVoid : faultOfError(refusal->error),
         url + " refuses: " + refusal->error +
             (refusal->description.empty() ? "." : " (" + refusal->description + ")."));
}

std::vector<ProviderKey> Provider::keys()
{
    return valueOf(readKeys(page(discovery().keys)));
}

UserInfo Provider::identityIn(const Tokens& tokens, const std::optional<std::string>& nonce)
{
    const auto token = valueOf(IdentityToken::parse(tokens.identityToken));
    auto known = keys();
    if (!token.hasKey(known)) known = keys(); // they may have changed in between
    IdentityToken::Expected expected{.issuer = discovery().issuer,
                                     .clientID = access_.source.clientID,
                                     .nonce = nonce,
                                     .accessToken = tokens.accessToken,
                                     .now = now_()};
    const Wiped wiped(expected.accessToken);
    return valueOf(token.verified(known, expected));
}

std::optional<UserInfo> Provider::userinfo(const Tokens& tokens)
{
    const auto& url = discovery().userinfoEndpoint;
    if (url.empty()) return std::nullopt;
    return valueOf(readUserInfo(page(url, "Bearer " + tokens.accessToken)));
}

void Provider::revoke(const std::string& refreshToken)
{
    const auto& url = discovery().revocationEndpoint;
    if (url.empty()) return;
    const auto client = authentication();
    const auto answer = ask({.url = url,
                             .form = formEncoded({{"token", refreshToken},
                                                  {"token_type_hint", "refresh_token"},
                                                  {"client_id", client.clientID},
                                                  {"client_secret", client.secret}}),
                             .authorization = client.header});
    if (answer.status != ok) failFor(answer, url);
}

} // namespace velmora::openid
