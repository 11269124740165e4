// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <filesystem>
#include <string>

namespace velmora::postgresql {

/// The password that is in the file; where none is named, what a person types at the terminal, a new one
/// twice. Throws std::runtime_error with a sentence for a file that others may use, too, and where there is
/// no terminal.
std::string passwordFor(const std::filesystem::path& file, const std::string& question, bool isNew);

} // namespace velmora::postgresql
