// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <variant>

namespace velmora {

/// Why a secret is not there, as a sentence without its full stop.
struct NoSecret {
    std::string why;
};

inline constexpr std::size_t longestSecret = 1'024; ///< bytes

/// The first line of a regular file, no link, that belongs to this program's user and that nobody else may
/// read or write. Any thread. Whoever has the text wipes it.
std::variant<std::string, NoSecret> secretIn(const std::filesystem::path& file);

/// Likewise of a credential that systemd has given to this program: systemd decides who may read it.
std::variant<std::string, NoSecret> secretInCredential(const std::filesystem::path& file);

} // namespace velmora
