// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ScriptedProvider.h"

#include "SigningKeys.h"
#include "identity/openid/Encoding.h"

#include <algorithm>
#include <ctime>
#include <mutex>
#include <set>

namespace velmora {

namespace {

using Json = ScriptedProvider::Json;
using Request = ScriptedProvider::Request;
using Answer = ScriptedProvider::Answer;
using Parameters = std::map<std::string, std::string>;

std::string valueOf(const Parameters& parameters, const std::string& name)
{
    const auto found = parameters.find(name);
    return found == parameters.end() ? "" : found->second;
}

Answer error(int status, const std::string& name)
{
    return {.status = status,
            .body = Json{{"error", name}, {"error_description", "As the test has it"}}.dump()};
}

std::string hashOf(const std::string& text, std::size_t bytes)
{
    const auto digest = openid::digestOf(text);
    return openid::base64Url({reinterpret_cast<const char*>(digest.data()), bytes});
}

} // namespace

struct ScriptedProvider::State {
    struct Grant {
        Parameters asked{}; ///< at /authorize
        bool isCodeUsed = false;
        bool isValid = true;
        std::string refreshToken{}; ///< the one that counts
    };

    std::recursive_mutex mutex; ///< a behavior may ask the provider
    Behavior behavior;
    SigningKeys keys{"1"};
    std::map<std::string, std::shared_ptr<Grant>> grants; ///< by all codes and tokens
    std::vector<std::string> secrets;
    std::vector<Request> untaken;
    std::map<std::string, std::size_t> counts;
    std::string issuer;
    std::unique_ptr<ScriptedServer> server; ///< last: its threads use the rest

    Answer answer(const Request& request);
    Answer own(const Request& request);
    Json discovery() const;
    Json keySet() const;
    std::string redirect(const Parameters& asked);
    Answer token(const Request& request);
    Answer tokensOf(const std::shared_ptr<Grant>& grant, const std::string& nonce);
    Answer userinfo(const Request& request) const;
    bool isClient(const Request& request) const;
    std::shared_ptr<Grant> grantOf(const std::string& secret) const;
    std::string made(const std::shared_ptr<Grant>& grant);
};

Answer ScriptedProvider::State::answer(const Request& request)
{
    Handler instead;
    {
        const std::lock_guard lock(mutex);
        untaken.push_back(request);
        ++counts[request.path];
        for (const auto* name : {"code_verifier", "client_secret"}) {
            if (auto value = valueOf(request.parameters, name); !value.empty()) secrets.push_back(value);
        }
        if (const auto found = behavior.paths.find(request.path); found != behavior.paths.end())
            instead = found->second;
    }
    if (instead) return instead(request);
    const std::lock_guard lock(mutex);
    return own(request);
}

Answer ScriptedProvider::State::own(const Request& request)
{
    if (request.path == "/.well-known/openid-configuration") return {.body = discovery().dump()};
    if (request.path == "/keys") return {.body = keySet().dump()};
    if (request.path == "/token") return token(request);
    if (request.path == "/userinfo") return userinfo(request);
    if (request.path == "/revoke") {
        if (!isClient(request)) return error(401, "invalid_client");
        if (const auto grant = grantOf(valueOf(request.parameters, "token"))) grant->isValid = false;
        return {};
    }
    if (request.path != "/authorize") return {.status = 404};
    const auto to = redirect(request.parameters);
    return to.empty() ? error(400, "invalid_request") : Answer{.status = 302, .headers = {"Location: " + to}};
}

Json ScriptedProvider::State::discovery() const
{
    Json said{
        {"issuer", issuer},
        {"authorization_endpoint", issuer + "/authorize"},
        {"token_endpoint", issuer + "/token"},
        {"jwks_uri", issuer + "/keys"},
        {"userinfo_endpoint", issuer + "/userinfo"},
        {"revocation_endpoint", issuer + "/revoke"},
        {"authorization_response_iss_parameter_supported", true},
        {"scopes_supported", {"openid", "profile", "email", "offline_access"}},
        {"response_types_supported", {"code"}},
        {"code_challenge_methods_supported", {"S256"}},
        {"token_endpoint_auth_methods_supported", {"none", "client_secret_basic", "client_secret_post"}}};
    if (behavior.discovery) behavior.discovery(said);
    return said;
}

Json ScriptedProvider::State::keySet() const
{
    auto shown = keys.publicKeys();
    if (behavior.keys) behavior.keys(shown);
    return shown;
}

std::string ScriptedProvider::State::redirect(const Parameters& asked)
{
    const auto to = valueOf(asked, "redirect_uri");
    if (!to.starts_with("http://127.0.0.1:") || valueOf(asked, "client_id") != behavior.clientID) return {};
    const auto state = valueOf(asked, "state");
    const auto back = [&](std::string_view name, const std::string& value) {
        return to + "?" + openid::formEncoded({{name, value}, {"state", state}, {"iss", issuer}});
    };
    if (!behavior.refusal.empty()) return back("error", behavior.refusal);
    if (valueOf(asked, "code_challenge_method") != "S256") return back("error", "invalid_request");
    return back("code", made(std::make_shared<Grant>(Grant{.asked = asked})));
}

/// A new code or token of the grant.
std::string ScriptedProvider::State::made(const std::shared_ptr<Grant>& grant)
{
    auto secret = openid::base64Url(openid::randomBytes(24));
    grants[secret] = grant;
    secrets.push_back(secret);
    return secret;
}

std::shared_ptr<ScriptedProvider::State::Grant>
ScriptedProvider::State::grantOf(const std::string& secret) const
{
    const auto found = grants.find(secret);
    return found != grants.end() && found->second->isValid ? found->second : nullptr;
}

bool ScriptedProvider::State::isClient(const Request& request) const
{
    if (valueOf(request.parameters, "client_secret") == behavior.clientSecret)
        return valueOf(request.parameters, "client_id") == behavior.clientID;
    return request.authorization ==
           "Basic " + openid::base64(openid::percentEncoded(behavior.clientID) + ":" +
                                     openid::percentEncoded(behavior.clientSecret));
}

Answer ScriptedProvider::State::token(const Request& request)
{
    const auto& given = request.parameters;
    if (!isClient(request)) return error(401, "invalid_client");
    if (valueOf(given, "grant_type") == "refresh_token") {
        const auto token = valueOf(given, "refresh_token");
        const auto grant = grantOf(token);
        if (!grant) return error(400, "invalid_grant");
        if (token == grant->refreshToken) return tokensOf(grant, "");
        grant->isValid = false; // an old one, or none: somebody has stolen it
        return error(400, "invalid_grant");
    }
    const auto grant = grantOf(valueOf(given, "code"));
    if (valueOf(given, "grant_type") != "authorization_code" || !grant) return error(400, "invalid_grant");
    const bool isProven =
        hashOf(valueOf(given, "code_verifier"), 32) == valueOf(grant->asked, "code_challenge");
    grant->isValid = isProven && !grant->isCodeUsed &&
                     valueOf(given, "redirect_uri") == valueOf(grant->asked, "redirect_uri");
    if (!grant->isValid) return error(400, "invalid_grant");
    grant->isCodeUsed = true;
    return tokensOf(grant, valueOf(grant->asked, "nonce"));
}

Answer ScriptedProvider::State::tokensOf(const std::shared_ptr<Grant>& grant, const std::string& nonce)
{
    const auto access = made(grant);
    const auto now = std::time(nullptr);
    Json claims{
        {"iss", issuer}, {"sub", behavior.subject},      {"aud", behavior.clientID}, {"exp", now + 600},
        {"iat", now},    {"at_hash", hashOf(access, 16)}};
    if (!nonce.empty()) claims["nonce"] = nonce;
    if (behavior.claims) behavior.claims(claims);
    Json header{{"alg", behavior.algorithm}, {"typ", "JWT"}};
    if (behavior.header) behavior.header(header);
    auto identity = keys.sign(header, claims.dump());
    if (behavior.identityToken) identity = behavior.identityToken(identity);
    secrets.push_back(identity);
    Json said{
        {"access_token", access}, {"token_type", "Bearer"}, {"expires_in", 600}, {"id_token", identity}};
    const bool isFirst = grant->refreshToken.empty();
    if (valueOf(grant->asked, "scope").find("offline_access") != std::string::npos &&
        (isFirst || behavior.rotates))
        said["refresh_token"] = grant->refreshToken = made(grant);
    if (behavior.tokens) behavior.tokens(said);
    return {.body = said.dump()};
}

Answer ScriptedProvider::State::userinfo(const Request& request) const
{
    constexpr std::string_view bearer = "Bearer ";
    if (!request.authorization.starts_with(bearer) || !grantOf(request.authorization.substr(bearer.size())))
        return error(401, "invalid_token");
    auto said = behavior.user;
    said["sub"] = behavior.subject;
    if (behavior.userinfo) behavior.userinfo(said);
    return {.body = said.dump()};
}

ScriptedProvider::ScriptedProvider() : state_(std::make_unique<State>())
{
    const std::lock_guard lock(state_->mutex);
    state_->server = std::make_unique<ScriptedServer>(
        [state = state_.get()](const Request& request) { return state->answer(request); });
    state_->issuer = "http://127.0.0.1:" + std::to_string(state_->server->port());
}

ScriptedProvider::~ScriptedProvider() = default;

std::string ScriptedProvider::issuer() const
{
    return state_->issuer;
}

void ScriptedProvider::change(const std::function<void(Behavior&)>& how)
{
    const std::lock_guard lock(state_->mutex);
    how(state_->behavior);
    if (!state_->behavior.clientSecret.empty()) state_->secrets.push_back(state_->behavior.clientSecret);
}

void ScriptedProvider::revokeGrants()
{
    const std::lock_guard lock(state_->mutex);
    for (const auto& [secret, grant] : state_->grants) grant->isValid = false;
}

void ScriptedProvider::goDown()
{
    state_->server->goDown();
}

void ScriptedProvider::comeUp()
{
    state_->server->comeUp();
}

std::string ScriptedProvider::redirectFor(const std::string& authorizationUrl)
{
    const std::lock_guard lock(state_->mutex);
    return state_->redirect(
        ScriptedServer::parametersOf(authorizationUrl.substr(authorizationUrl.find('?') + 1)));
}

std::vector<Request> ScriptedProvider::takeRequests()
{
    const std::lock_guard lock(state_->mutex);
    return std::exchange(state_->untaken, {});
}

std::size_t ScriptedProvider::count(const std::string& path) const
{
    const std::lock_guard lock(state_->mutex);
    const auto found = state_->counts.find(path);
    return found == state_->counts.end() ? 0 : found->second;
}

std::vector<std::string> ScriptedProvider::secrets() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->secrets;
}

std::size_t ScriptedProvider::validRefreshTokens() const
{
    const std::lock_guard lock(state_->mutex);
    return static_cast<std::size_t>(std::ranges::count_if(state_->grants, [](const auto& entry) {
        return entry.second->isValid && entry.first == entry.second->refreshToken;
    }));
}

} // namespace velmora
