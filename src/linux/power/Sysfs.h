// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// What reading one attribute gave: its text, or why there is none.
struct SysfsText {
    int error = 0;    ///< errno, 0 where `text` was read
    std::string text; ///< without the final newline; any bytes

    bool isAbsent() const; ///< no such file: not offered by the driver, or its device has just gone
};

/// The kernel's tree of devices, or a stand-in of plain files with the same names. Holds no descriptors; may
/// be copied, and used from any thread.
class Sysfs {
public:
    explicit Sysfs(std::filesystem::path root) : root_(std::move(root)) {}

    /// The tree named by the variable VELMORA_SYSFS, or /sys where that is unset or empty.
    static Sysfs ofEnvironment();

    const std::filesystem::path& root() const { return root_; }

    /// Whether the kernel itself is behind it, and with it the kernel's events.
    bool isKernels() const { return root_ == "/sys"; }

private:
    std::filesystem::path root_;
};

/// Opens the attribute `name` of the open folder. None, and errno, where that fails; never waits for a
/// writer, and what is not a regular file gives EINVAL.
FileDescriptor openAttribute(int folder, const char* name);

/// Reads the open attribute from its beginning, once. What is longer than a page, which no attribute is,
/// gives EFBIG.
SysfsText readAttribute(int file);

/// Whether the open file or folder is the kernel's own: there a file that is kept open shows what holds now,
/// while elsewhere another may have been put in its place.
bool isOnSysfs(int file);

/// The decimal integer that is the whole of `text`; nothing for anything else, a number out of range
/// included.
std::optional<std::int64_t> parseInteger(std::string_view text);

} // namespace velmora
