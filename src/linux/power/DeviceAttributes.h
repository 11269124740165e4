// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Complaints.h"
#include "power/Sysfs.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The attributes of one device. What is absent is nothing; what is there and cannot be read, or is no number
/// where one is wanted, is nothing as well, and one complaint.
class DeviceAttributes {
public:
    /// `folder` is relative to the root. All arguments but it must outlive the object.
    DeviceAttributes(const Sysfs& sysfs, Complaints& complaints, std::filesystem::path folder)
        : sysfs_(sysfs), complaints_(complaints), folder_(std::move(folder))
    {
    }

    /// Without blanks at either end.
    std::optional<std::string> text(std::string_view name) const;
    std::optional<std::int64_t> integer(std::string_view name) const;

    /// One complaint about the attribute; `what` ends the sentence that begins with its name.
    void complain(std::string_view name, const std::string& what) const;

private:
    const Sysfs& sysfs_;
    Complaints& complaints_;
    std::filesystem::path folder_;
};

} // namespace velmora
