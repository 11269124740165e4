// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ScriptedServer.h"

#include <nlohmann/json.hpp>

namespace velmora {

/// An OpenID provider on the loopback that does as a test tells it. Untold it is an honest one: a public
/// client, PKCE, refresh tokens that rotate (use of an old one ends the grant), revocation; whoever comes to
/// /authorize is signed in. Gone with the object. Its functions may be called from any thread.
class ScriptedProvider {
public:
    using Json = nlohmann::json;
    using Request = ScriptedServer::Request;
    using Answer = ScriptedServer::Answer;
    using Manner = ScriptedServer::Manner;
    using Handler = ScriptedServer::Handler;

    /// What the provider says and does. A function changes what would be said, just before.
    struct Behavior {
        std::string subject = "user-0001-of-the-provider";
        Json user{{"given_name", "Mara"}, {"family_name", "Lind"}, {"email", "mara@example.org"}};
        std::string clientID = "velmora";
        std::string clientSecret{}; ///< demanded where there is one
        bool rotates = true;
        std::string refusal{};           ///< "access_denied": what /authorize answers with
        std::string algorithm = "RS256"; ///< or any that SigningKeys knows
        std::function<void(Json&)> discovery{}, keys{}, header{}, claims{}, tokens{}, userinfo{};
        std::function<std::string(std::string)> identityToken{}; ///< after its signature
        std::map<std::string, Handler> paths{}; ///< instead of what it does at "/token" and so on
    };

    ScriptedProvider();
    ~ScriptedProvider();
    ScriptedProvider(const ScriptedProvider&) = delete;
    ScriptedProvider& operator=(const ScriptedProvider&) = delete;

    /// "http://127.0.0.1:PORT"
    std::string issuer() const;

    void change(const std::function<void(Behavior&)>& how);
    /// The user's grants end: what was given is void.
    void revokeGrants();
    /// Refuses connections, and accepts them again.
    void goDown();
    void comeUp();

    /// Where the browser is sent once the user has signed in at that address, without a browser.
    std::string redirectFor(const std::string& authorizationUrl);

    /// What has been asked since the last call, in order.
    std::vector<Request> takeRequests();
    std::size_t count(const std::string& path) const; ///< of all requests for it
    /// All tokens, codes and secrets that it has ever given or been given: what must not be found anywhere.
    std::vector<std::string> secrets() const;
    std::size_t validRefreshTokens() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace velmora
