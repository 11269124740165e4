// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Small files in one piece. Uses stdio: iostreams pull in locales, which would be a third of a resident
/// program.

/// Bytes; a thousand samples take a hundred thousand.
inline constexpr std::uintmax_t maximumFileBytes = 16U << 20U;

/// All of `file`. Nothing for what is not a regular file of at most `maximumFileBytes` bytes (a pipe would
/// block for ever) or cannot be read.
std::optional<std::string> readWholeFile(const std::filesystem::path& file);

/// Whether `bytes` are now all of `file`, as far as the kernel is concerned: nothing is synced.
bool writeWholeFile(const std::filesystem::path& file, std::string_view bytes);

/// Makes a folder that its user alone may look into, and those above it as is usual, where they are missing.
/// What is there stays as it is.
void makePrivateFolder(const std::filesystem::path& folder);

} // namespace velmora
