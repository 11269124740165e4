// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"
#include "identity/openid/RedirectRequest.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::openid {

/// A page for the person in the browser. UTF-8.
struct ResultPage {
    enum class Kind { signedIn, notSignedIn };
    Kind kind;
    std::string text;
};

/// Where the browser comes to when the provider has done its part: a small HTTP server on 127.0.0.1, on a
/// port that was free, as long as this lives (RFC 8252).
///
/// Connections of other users of the computer are closed unanswered. What else comes is answered as the web
/// has it, and waited past: neither a stray request nor somebody who guesses ends a sign-in. Connections,
/// their bytes and their time are bounded. One thread.
class RedirectListener {
public:
    /// Throws std::system_error where no port is to be had.
    RedirectListener();

    /// The redirect URI: "http://127.0.0.1:PORT/callback".
    const std::string& address() const { return address_; }

    /// Waits for the browser to come with this state, and lets it wait for its page. Nothing once the
    /// deadline is over, or `interruption` (a descriptor) readable.
    std::optional<Redirect> wait(const std::string& state, std::chrono::steady_clock::time_point deadline,
                                 int interruption);

    /// Shows the page to the browser that has come, and hangs up on all.
    void answer(const ResultPage& page);

    /// What came beside that, for the log; empty: nothing.
    std::string strays() const;

private:
    /// Somebody who has not said yet what they want.
    struct Visit {
        FileDescriptor connection{};
        std::chrono::steady_clock::time_point deadline{};
        std::string request{};

        Visit(FileDescriptor accepted, std::chrono::steady_clock::time_point end);
        Visit(Visit&&) noexcept = default;
        Visit& operator=(Visit&&) noexcept = default;
        ~Visit();
    };

    std::vector<pollfd> waited(std::chrono::steady_clock::time_point deadline, int interruption) const;
    void admit();
    std::optional<Redirect> serve(Visit& visit, const std::string& state);
    std::optional<Redirect> answered(Visit& visit, std::string_view head, const std::string& state);

    FileDescriptor socket_;
    std::string address_;
    std::vector<Visit> visits_;
    FileDescriptor browser_; ///< the connection that brought the redirect
    std::size_t foreign_ = 0;
    std::size_t wrongStates_ = 0;
    std::size_t background_ = 0;
};

} // namespace velmora::openid
