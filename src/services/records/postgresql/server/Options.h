// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/RecordStores.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <variant>

namespace velmora::postgresql {

/// What the command line asks for.
struct Request {
    enum class Command : std::uint8_t { setup, add, remove, check, help, version };
    Command command = Command::help;
    std::string person{}; ///< to add or to remove
    /// The server, and who administers it; a host that begins with "/" is the folder of a socket.
    RecordPlace place{.kind = RecordPlace::Kind::server, .host = "/var/run/postgresql", .user = "postgres"};
    std::filesystem::path adminPasswordFile{}; ///< empty: the administrator is asked
    std::filesystem::path passwordFile{};      ///< of the person to add; likewise
};

/// The request, or what is wrong with the command line, as a sentence.
std::variant<Request, std::string> parse(std::span<const char* const> words);

std::string usage();

} // namespace velmora::postgresql
