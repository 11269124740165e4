// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopParts.h"

#include <algorithm>
#include <set>

namespace velmora {

namespace {

constexpr std::string_view supplies = "class/power_supply/";

} // namespace

std::string supplyPath(std::string_view supply)
{
    return std::string(supplies) + std::string(supply);
}

std::vector<std::string> supplyNames(const CapturedMachine& machine)
{
    std::set<std::string> names;
    const auto collect = [&](const auto& files) {
        for (const auto& [path, content] : files) {
            if (!path.starts_with(supplies)) continue;
            names.insert(path.substr(supplies.size(), path.find('/', supplies.size()) - supplies.size()));
        }
    };
    collect(machine.values);
    collect(machine.errors);
    return {names.begin(), names.end()};
}

LaptopParts LaptopParts::of(const CapturedMachine& machine)
{
    LaptopParts parts;
    std::vector<std::string> usb;
    bool isOnline = false;
    double drain = 0;
    for (const auto& name : supplyNames(machine)) {
        const Folder folder(machine, supplyPath(name));
        const auto type = folder.text("type");
        if (folder.text("scope") == "Device") continue;
        if (type == "Battery") {
            auto captured = CapturedBattery::of(folder);
            if (!captured) continue;
            if (captured->make().watts < 0) drain -= captured->make().watts;
            parts.batteries.push_back({name, *captured});
        } else if (folder.has("online")) {
            if (type == "Mains") parts.chargers.push_back(name);
            if (type.starts_with("USB")) usb.push_back(name);
            isOnline = isOnline || folder.number("online", 0) != 0;
        }
    }
    if (parts.chargers.empty()) parts.chargers = usb;
    parts.isPlugged = parts.chargers.empty() ? drain == 0 : isOnline;
    if (drain >= 0.5) parts.load = std::min(drain, 150.0);
    return parts;
}

} // namespace velmora
