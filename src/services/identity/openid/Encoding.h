// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// How the messages of a sign-in write bytes and texts.
namespace velmora::openid {

using Digest = std::array<std::uint8_t, 32>;
/// SHA-256.
Digest digestOf(std::string_view bytes);

/// As tokens and PKCE have it: the URL's alphabet, nothing at the end.
std::string base64Url(std::string_view bytes);
/// The bytes of what `base64Url` writes; nullopt for any other text.
std::optional<std::string> fromBase64Url(std::string_view text);
/// As a header has it: the common alphabet, filled up with "=".
std::string base64(std::string_view bytes);

/// All but letters, digits and "-._~" as %XX.
std::string percentEncoded(std::string_view text);

/// "name=value&name=value", each encoded. Of no name what has no value.
using FormField = std::pair<std::string_view, std::optional<std::string_view>>;
std::string formEncoded(std::initializer_list<FormField> fields);

/// `count` bytes that nobody can guess. Throws std::system_error where the kernel has none.
std::string randomBytes(std::size_t count);

/// Whether both are the same, in a time that does not tell where they differ.
bool isSameSecret(std::string_view one, std::string_view other);

} // namespace velmora::openid
