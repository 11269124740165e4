// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/AuthorizationRequest.h"

#include "identity/openid/Encoding.h"

#include <algorithm>
#include <string_view>

namespace velmora::openid {

namespace {

/// Whether a query has a parameter of that name.
bool has(std::string_view query, std::string_view name)
{
    while (!query.empty()) {
        const auto parameter = query.substr(0, query.find('&'));
        if (parameter.substr(0, parameter.find('=')) == name) return true;
        query.remove_prefix(std::min(parameter.size() + 1, query.size()));
    }
    return false;
}

/// With what outlives a restart, unless the provider says that it has no such thing.
std::string scopesFor(const Discovery& discovery)
{
    const bool isOffered = !discovery.scopes || std::ranges::count(*discovery.scopes, "offline_access") > 0;
    return std::string("openid profile email") + (isOffered ? " offline_access" : "");
}

std::string digestText(const std::string& verifier)
{
    const auto digest = digestOf(verifier);
    return base64Url({reinterpret_cast<const char*>(digest.data()), digest.size()});
}

/// What is no harm to a shell stays; the rest means the same once it is encoded.
std::string harmless(std::string_view url)
{
    constexpr std::string_view marks = ":/?[]@&=+,%";
    std::string safe;
    for (const char c : url)
        safe += marks.find(c) != marks.npos ? std::string(1, c) : percentEncoded({&c, 1});
    return safe;
}

} // namespace

SignInMarks SignInMarks::make()
{
    const auto fresh = [] { return base64Url(randomBytes(32)); };
    return {.state = fresh(), .nonce = fresh(), .verifier = fresh()};
}

std::string authorizationPage(const Discovery& discovery, const IdentitySource& source,
                              const SignInMarks& marks, const std::string& redirectAddress)
{
    const auto scopes = scopesFor(discovery);
    const auto challenge = digestText(marks.verifier);
    const auto unlessGiven = [&source](std::string_view name, std::string_view value) {
        return FormField{name, has(source.parameters, name) ? std::nullopt : std::optional(value)};
    };
    const auto& page = discovery.authorizationEndpoint;
    auto url = page + (page.find('?') == page.npos ? "?" : "&") +
               formEncoded({{"response_type", "code"},
                            {"client_id", source.clientID},
                            {"redirect_uri", redirectAddress},
                            unlessGiven("scope", scopes),
                            {"state", marks.state},
                            {"nonce", marks.nonce},
                            {"code_challenge", challenge},
                            {"code_challenge_method", "S256"},
                            // Without it some providers sign in, but give nothing that outlives a restart.
                            unlessGiven("prompt", "consent")});
    if (!source.parameters.empty()) url += "&" + source.parameters;
    return harmless(url);
}

} // namespace velmora::openid
