// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "CapturedMachine.h"
#include "TemporaryFolder.h"
#include "power/Sysfs.h"

#include <string>
#include <utility>
#include <vector>

namespace velmora {

/// A tree of devices in a temporary folder.
struct SysfsTree {
    TemporaryFolder folder;
    Sysfs sysfs{folder.path()};

    using Attributes = std::vector<std::pair<std::string, std::string>>;

    SysfsTree() = default;

    /// A captured machine, by its file's name without the ending.
    explicit SysfsTree(const std::string& machine)
    {
        CapturedMachine::load(std::string(VELMORA_MACHINES "/") + machine + ".sysfs").layInto(folder.path());
    }

    SysfsTree& supply(const std::string& name, const Attributes& attributes)
    {
        return write("class/power_supply/" + name + '/', attributes);
    }

    SysfsTree& zone(int number, const Attributes& attributes)
    {
        return write("class/thermal/thermal_zone" + std::to_string(number) + '/', attributes);
    }

    /// The attribute is there, and reading it gives EIO.
    SysfsTree& breakFile(const std::string& path)
    {
        std::filesystem::remove(folder.path() / path);
        std::filesystem::create_directories((folder.path() / path).parent_path());
        std::filesystem::create_symlink("/proc/self/mem", folder.path() / path);
        return *this;
    }

private:
    SysfsTree& write(const std::string& prefix, const Attributes& attributes)
    {
        for (const auto& [name, value] : attributes) folder.write(prefix + name, value + '\n');
        return *this;
    }
};

} // namespace velmora
