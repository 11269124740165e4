// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Log.h"
#include "platform/RecordStores.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>

namespace velmora {

/// Why a password is not there, as a sentence without its full stop.
struct NoPassword {
    std::string why;
};

inline constexpr std::size_t longestPassword = 1'024; ///< bytes

/// The first line of a regular file, no link, that belongs to this program's user and that nobody else may
/// read or write. Any thread.
std::variant<std::string, NoPassword> passwordIn(const std::filesystem::path& file);

/// Where the password for the server at `place` comes from: from the file that was chosen there, and from
/// nowhere else then; else by `kept`; else, for a program that has no secret store, from the credential
/// `velmora-fleet-password` that systemd has given to it. To be made on the main thread, asked on any; empty
/// where there is none. What is wrong with a file is a line in the log, once until it is right.
RecordStores::Password passwordSource(const RecordPlace& place, RecordStores::Password kept,
                                      std::shared_ptr<Log> log);

} // namespace velmora
