// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/DeviceClass.h"

#include <array>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace velmora {

namespace {
constexpr std::size_t maximumDevices = 256;
}

DeviceClass::DeviceClass(const Sysfs& sysfs, std::filesystem::path folder, Complaints& complaints,
                         std::string_view prefix)
    : root_(sysfs.root()), folder_(std::move(folder)), complaints_(complaints), prefix_(prefix)
{
}

bool DeviceClass::openFolder()
{
    if (remembers_ && directory_) return lseek(directory_.get(), 0, SEEK_SET) == 0;
    directory_ = FileDescriptor(::open((root_ / folder_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    remembers_ = directory_ && isOnSysfs(directory_.get());
    return static_cast<bool>(directory_);
}

/// The number of an entry tells a device from the next one of its name.
DeviceClass::Listing DeviceClass::list()
{
    Listing listing;
    if (!openFolder()) return listing;
    alignas(dirent64) std::array<char, 4096> buffer; // NOLINT: filled by the kernel
    for (ssize_t size = 0; (size = getdents64(directory_.get(), buffer.data(), buffer.size())) > 0;) {
        for (ssize_t at = 0; at < size;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + at);
            at += entry->d_reclen;
            const std::string_view name = entry->d_name;
            if (name == "." || name == ".." || !name.starts_with(prefix_)) continue;
            if (listing.size() < maximumDevices) listing.emplace(name, entry->d_ino);
        }
        if (remembers_ && size < static_cast<ssize_t>(buffer.size() / 2))
            break; // the kernel fills what it can
    }
    // A driver's folder goes with its module, and another one comes: the open one would stay empty.
    if (!remembers_ || listing.empty()) directory_ = FileDescriptor();
    return listing;
}

void DeviceClass::replace(const Listing& present)
{
    if (!remembers_) devices_.clear();
    std::erase_if(devices_, [&](const auto& device) {
        const auto now = present.find(device.first);
        return now == present.end() || now->second != known_[device.first];
    });
    for (const auto& [name, number] : present) {
        if (!devices_.contains(name))
            devices_.emplace(name, DeviceAttributes(root_, folder_ / name, complaints_));
    }
    known_ = present;
}

DeviceClass::Devices& DeviceClass::look(bool afresh)
{
    const auto present = list();
    if (!remembers_ || present != known_) replace(present);
    if (afresh) {
        for (auto& [name, device] : devices_) device.forget();
    }
    return devices_;
}

} // namespace velmora
