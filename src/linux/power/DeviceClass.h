// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "power/DeviceAttributes.h"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace velmora {

/// The devices of one class, the power supplies say, from look to look. Each look lists the folder once. On
/// the kernel's own tree a device keeps what it remembers for as long as it is the same: one that went, or
/// stands in the place of another, begins anew. One thread at a time.
class DeviceClass {
public:
    using Devices = std::map<std::string, DeviceAttributes, std::less<>>; ///< by name, in that order

    /// `folder` is relative to the root of `sysfs`. Devices whose names begin otherwise than `prefix` are
    /// passed over. `complaints` must outlive the object.
    DeviceClass(const Sysfs& sysfs, std::filesystem::path folder, Complaints& complaints,
                std::string_view prefix = "");

    /// The devices that are there now, none where they cannot be listed. `afresh`: each of them may have
    /// changed.
    Devices& look(bool afresh);

private:
    using Listing = std::map<std::string, ino_t, std::less<>>;

    Listing list();
    bool openFolder();
    void replace(const Listing& present);

    std::filesystem::path root_;
    std::filesystem::path folder_;
    std::reference_wrapper<Complaints> complaints_;
    std::string prefix_;
    FileDescriptor directory_; ///< kept on the kernel's own tree
    bool remembers_ = false;
    Listing known_;
    Devices devices_;
};

} // namespace velmora
