// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velmora::openid {

/// What the provider has sent the browser back with, for the sign-in that was asked about. Bytes as they
/// came.
struct Redirect {
    std::string code{};
    std::string error{}; ///< "access_denied"; empty where there is a code
    std::string errorText{};
    std::optional<std::string> issuer{};
};

/// What else a request on the listener's port can be.
enum class Stray {
    malformed, ///< not HTTP, or parameters that occur twice
    method,    ///< neither GET nor HEAD
    path,
    state,      ///< of another sign-in, or of none
    head,       ///< asks what an answer would look like, without wanting one
    background, ///< made by a page or ahead of time, rather than by somebody who goes there
};

/// Reads a request's head, "GET /callback?code=...&state=... HTTP/1.1" and what follows: a redirect if it has
/// just this state, which is compared in a time that says nothing about it.
std::variant<Redirect, Stray> readRedirect(std::string_view head, std::string_view state);

} // namespace velmora::openid
