// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Descriptor.h"
#include "base/Mutex.h"

#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace velmora {

/// An OpenID provider on a free port of 127.0.0.1 that does as a test tells it. Untold it is an honest one: a
/// public client, PKCE, refresh tokens that rotate (use of an old one ends the grant), revocation; whoever
/// comes to /authorize is signed in. Gone with the object. Its functions may be called from any thread.
class ScriptedProvider {
public:
    using Json = nlohmann::json;

    struct Request {
        std::string method{}, path{};                    ///< without the query
        std::map<std::string, std::string> parameters{}; ///< of the query and the form, decoded
        std::string authorization{};
        std::string body{};
    };
    /// How an answer is sent.
    enum class Manner {
        whole,
        truncated,      ///< half of the body that was announced, then the end
        slow,           ///< a byte each 50 ms
        silent,         ///< not at all, the connection stays open
        reset,          ///< not at all, the connection is reset
        endlessHeaders, ///< until the client goes
        endlessBody,    ///< likewise, the body
    };
    struct Answer {
        int status = 200;
        std::string body{};
        std::vector<std::string> headers{"Content-Type: application/json"};
        Manner manner = Manner::whole;
    };
    using Handler = std::function<Answer(const Request&)>;

    /// What the provider says and does. A function changes what would be said, just before.
    struct Behavior {
        std::string subject = "user-0001-of-the-provider";
        Json user{{"given_name", "Mara"}, {"family_name", "Lind"}, {"email", "mara@example.org"}};
        std::string clientID = "velmora";
        std::string clientSecret{}; ///< demanded where there is one
        bool givesRefreshToken = true;
        bool rotates = true;
        bool isBlind = false;            ///< asks for no PKCE
        std::string refusal{};           ///< "access_denied": what /authorize answers with
        std::string algorithm = "RS256"; ///< or ES256, PS256, none, HS256 (with the public key as secret)
        std::string keyID{};             ///< what the token names as its key; empty: the right one
        std::function<void(Json&)> discovery{}, keys{}, claims{}, header{}, tokens{}, userinfo{};
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
    /// From now on signs with other keys, and shows these alone.
    void rotateKeys();
    /// The user's grants end: what was given is void.
    void revokeGrants();
    /// Accepts no connections, and does again.
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
    std::shared_ptr<State> state_;
};

} // namespace velmora
