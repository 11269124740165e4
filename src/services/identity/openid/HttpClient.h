// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "identity/OpenIDClient.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velmora::openid {

struct HttpRequest {
    std::string url;
    std::optional<std::string> form{}; ///< posted, encoded already; without one it is a GET
    std::string authorization{};       ///< "Bearer ..." or "Basic ..."; empty: none
};

struct HttpAnswer {
    int status = 0; ///< any: a redirection is not followed, but told
    std::string body{};
};

/// Speaks HTTP to a provider. Encrypted, with a certificate that the system trusts, or to this machine itself
/// (for which no proxy is used); no redirections, no cookies, no stored passwords. Each request has a
/// connection of its own: on one that was used before, a request whose answer is lost would be sent again,
/// and a refresh token must not be used twice.
class HttpClient {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::seconds timeLimit{15};   ///< for one request, name look-up included
    static constexpr std::size_t maximumBody = 1 << 20;    ///< bytes
    static constexpr std::size_t maximumHeaders = 1 << 16; ///< bytes

    HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;
    ~HttpClient();

    /// Whether this client speaks to that address: https, or http with the host localhost, 127.0.0.1 or
    /// [::1]; no user, no fragment, printable ASCII, at most 2000 characters.
    static bool isEndpoint(std::string_view url);
    /// Whether it is one with https.
    static bool isEncrypted(std::string_view url);

    /// Sends the request and waits for the answer, at most `timeLimit` and at most until `end`. Faults:
    /// `canceled`, `unreachable` (no connection, no trust, no answer in time, one that breaks off or whose
    /// chunks are none), `invalid` (no endpoint, an answer that is no HTTP or too long). One thread at a
    /// time.
    std::variant<HttpAnswer, IdentityProblem> exchange(const HttpRequest& request,
                                                       Deadline end = Deadline::max());

    /// Ends the request under way at once, and all that follow. Any thread.
    void cancel();
    bool isCanceled() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace velmora::openid
