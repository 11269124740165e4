// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// An HTTP server on a free port of 127.0.0.1 that answers as a test tells it, well or badly. Each connection
/// is served on a thread of its own, and closed after its answer. Gone with the object.
class ScriptedServer {
public:
    struct Request {
        std::string method{};
        std::string path{};                              ///< without the query
        std::map<std::string, std::string> parameters{}; ///< of the query and the form, decoded
        std::string authorization{};
        std::string body{};
    };
    /// How an answer is sent.
    enum class Manner : std::uint8_t {
        whole,
        truncated,      ///< half of the body that was announced, then the end
        slow,           ///< a byte each 50 ms
        silent,         ///< not at all, the connection stays open
        reset,          ///< not at all, the connection is reset
        endlessHeaders, ///< until the client goes
        endlessHeader,  ///< likewise, one line
        endlessBody,    ///< likewise, the body
        keptOpen,       ///< whole, and the connection stays open for more
        raw,            ///< the body alone, as if it were all of the answer
    };
    struct Answer {
        int status = 200;
        std::string body{};
        std::vector<std::string> headers{"Content-Type: application/json"};
        Manner manner = Manner::whole;
    };
    /// Called on the connection's thread.
    using Handler = std::function<Answer(const Request&)>;

    /// With `speaksFirst` a connection is answered before anything was asked: the request is empty.
    explicit ScriptedServer(Handler handler, bool speaksFirst = false);
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    std::uint16_t port() const;
    /// Refuses connections, and ends those that it has.
    void goDown();
    /// Accepts connections at the same port again.
    void comeUp();

    /// What "name=value&..." says.
    static std::map<std::string, std::string> parametersOf(std::string_view query);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace velmora
