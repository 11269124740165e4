// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace velmora {

/// What /sys showed on a real laptop, taken down in a text file (`*.sysfs`), one attribute a line:
///
///     # a comment, as is an empty line
///     class/power_supply/BAT0/capacity<TAB>80
///     !class/power_supply/BAT0/current_now<TAB>ENODEV
///
/// Paths are relative to the root of sysfs. A value goes without its final newline; `\n`, `\t`, `\\` and
/// `\xHH` stand for those bytes. `!` marks a file that is there and fails to be read, with the name of its
/// errno.
struct CapturedMachine {
    std::map<std::string, std::string> values; ///< path to bytes
    std::map<std::string, int> errors;         ///< path to errno

    /// Throws std::runtime_error naming the line that is not of that form, or whose path leaves the tree.
    static CapturedMachine parse(std::string_view text);

    /// As `parse`; also throws where the file cannot be read.
    static CapturedMachine load(const std::filesystem::path& file);

    /// The `uevent` file of a supply, as the kernel makes it from the driver's own properties: what comes
    /// from elsewhere (`alarm`, thresholds, charge types) is not in it, nor is what cannot be read. The
    /// captured one where there is one. Without a final newline.
    std::string uevent(std::string_view supply) const;

    /// Lays the machine as plain files under `root`, made if need be, with a `uevent` for each supply. A file
    /// that cannot be read becomes a link to /proc/self/mem: it opens, and reading it gives EIO, whatever the
    /// errno was. Throws std::filesystem::filesystem_error.
    void layInto(const std::filesystem::path& root) const;
};

} // namespace velmora
