// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"
#include "platform/Complaints.h"
#include "power/Sysfs.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The attributes of one device. What is absent is nothing; what is there and cannot be read, or is no number
/// where one is wanted, is nothing as well, and one complaint.
///
/// On the kernel's own tree the object remembers: an attribute that was read stays open and is read again in
/// one call, and one that is absent is not looked for again until `forget`. Charge thresholds and behaviours
/// are looked for until they are there: vendor drivers bring them late and announce nothing. An attribute
/// whose driver was unloaded meanwhile (ENODEV) is opened anew. On a tree of plain files, where one is
/// replaced by another at will, nothing is remembered.
///
/// One thread at a time.
class DeviceAttributes {
public:
    enum class Memory : std::uint8_t { onSysfs, always };

    /// Opens `folder`, which is relative to `root`. `complaints` must outlive the object. `memory`: on which
    /// file systems the object remembers; "always" is for trees whose files stay, as the kernel's do.
    DeviceAttributes(const std::filesystem::path& root, std::filesystem::path folder, Complaints& complaints,
                     Memory memory = Memory::onSysfs);

    /// Reads the attribute, without complaint.
    SysfsText read(std::string_view name);

    /// Of the attribute, relative to the root.
    std::filesystem::path path(std::string_view name) const { return folder_ / name; }

    /// Without blanks at either end.
    std::optional<std::string> text(std::string_view name);
    std::optional<std::int64_t> integer(std::string_view name);

    /// Of what stays as long as the device is there, its type say: read once.
    std::optional<std::string> fixedText(std::string_view name);

    /// One complaint about the attribute; `what`, without a full stop, ends the sentence that begins with its
    /// name: what is wrong, the value, and what is done instead.
    void complain(std::string_view name, const std::string& what) const;

    /// The device may have changed: what was absent is looked for again, but for a temperature.
    void forget();

private:
    /// What is known of one attribute.
    struct Known {
        FileDescriptor file; ///< open, to be read again
        bool isAbsent = false;
        bool comesBack = false; ///< its driver was unloaded once
        bool isFixed = false;
        std::optional<std::string> fixed; ///< what was read, where that stays
    };

    Known& known(std::string_view name);
    SysfsText open(std::string_view name, Known* attribute);
    void close(Known& attribute);
    std::optional<std::string> checked(std::string_view name, const SysfsText& read) const;
    std::optional<std::int64_t> parsed(std::string_view name, const std::optional<std::string>& value) const;

    std::filesystem::path folder_;
    std::reference_wrapper<Complaints> complaints_;
    FileDescriptor directory_;
    int error_ = 0; ///< errno of a folder that cannot be opened
    bool remembers_ = false;
    int open_ = 0; ///< attributes that are kept open
    std::map<std::string, Known, std::less<>> attributes_;
};

} // namespace velmora
