// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "report/Diagnosis.h"

#include "base/FileDescriptor.h"
#include "base/Moment.h"
#include "base/Text.h"
#include "base/Utf8.h"
#include "base/Version.h"
#include "base/WholeFile.h"
#include "output/Json.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <span>
#include <sys/utsname.h>
#include <system_error>

namespace velmora::ctl {

namespace {

constexpr std::size_t maximumValue = 400; // bytes
constexpr std::size_t maximumDevices = 64;

// What may be told. Serial numbers, asset tags, UUIDs and addresses are none of these.
constexpr std::array machineAttributes{"sys_vendor",  "product_name",  "product_version", "product_family",
                                       "bios_vendor", "bios_version",  "bios_date",       "board_vendor",
                                       "board_name",  "board_version", "chassis_type"};
constexpr std::array supplyAttributes{
    "type",
    "scope",
    "present",
    "online",
    "status",
    "capacity",
    "capacity_level",
    "energy_now",
    "energy_full",
    "energy_full_design",
    "charge_now",
    "charge_full",
    "charge_full_design",
    "power_now",
    "power_avg",
    "current_now",
    "current_avg",
    "current_max",
    "voltage_now",
    "voltage_min_design",
    "voltage_max_design",
    "temp",
    "cycle_count",
    "health",
    "technology",
    "manufacturer",
    "model_name",
    "time_to_full_now",
    "time_to_full_avg",
    "time_to_empty_now",
    "time_to_empty_avg",
    "charge_control_start_threshold",
    "charge_control_end_threshold",
    "charge_start_threshold",
    "charge_stop_threshold",
    "charge_behaviour",
    "charge_type",
    "charge_types",
    "usb_type",
};
constexpr std::array zoneAttributes{"type", "mode", "policy", "temp"};
constexpr std::array driverSwitches{"bus/platform/drivers/ideapad_acpi", "devices/platform/huawei-wmi",
                                    "devices/platform/lg-laptop", "devices/platform/samsung",
                                    "devices/platform/sony-laptop"};
constexpr std::array releaseKeys{"PRETTY_NAME", "ID", "VERSION_ID"};

using Entries = std::vector<std::pair<std::string, std::string>>;

/// As it is shown: one line, cut off.
std::string shown(const std::string& text)
{
    const auto clean = trimmed(printable(cleanUtf8(text)));
    return std::string(utf8Prefix(clean, maximumValue));
}

FileDescriptor openFolder(const std::filesystem::path& path)
{
    return FileDescriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

SysfsText readFrom(const FileDescriptor& folder, const char* name)
{
    const auto file = openAttribute(folder.get(), name);
    return file ? readAttribute(file.get()) : SysfsText{.error = errno, .text = {}};
}

/// The attributes that are there, and why one of them cannot be read.
Entries attributes(const std::filesystem::path& path, std::span<const char* const> allowed)
{
    Entries entries;
    const auto folder = openFolder(path);
    if (!folder) return entries;
    for (const auto* name : allowed) {
        const auto read = readFrom(folder, name);
        if (read.isAbsent()) continue;
        entries.emplace_back(name, read.error == 0 ? shown(read.text)
                                                   : "(" + std::generic_category().message(read.error) + ")");
    }
    return entries;
}

std::vector<std::string> namesIn(const std::filesystem::path& folder, std::string_view prefix = "")
{
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator each(folder, error), end; !error && each != end;
         each.increment(error)) {
        const std::string name = each->path().filename();
        if (name.starts_with(prefix) && names.size() < maximumDevices) names.push_back(name);
    }
    std::ranges::sort(names);
    return names;
}

Entries systemEntries()
{
    Entries entries{{"velmoractl", version()}};
    utsname kernel{};
    if (uname(&kernel) == 0) {
        entries.emplace_back("kernel", shown(std::string(kernel.sysname) + ' ' + kernel.release));
        entries.emplace_back("machine", shown(kernel.machine));
    }
    const auto release = readWholeFile("/etc/os-release").value_or("");
    for (const std::string key : releaseKeys) {
        const auto at = ('\n' + release).find('\n' + key + '=');
        if (at == release.npos) continue;
        const auto begin = at + key.size() + 1;
        entries.emplace_back(key, shown(release.substr(begin, release.find('\n', begin) - begin)));
    }
    return entries;
}

Entries of(const KeyedArchive& record)
{
    Entries entries;
    for (const auto& [key, value] : record.values()) {
        const auto* text = std::get_if<std::string>(&value);
        entries.emplace_back(key, text ? shown(*text) : jsonOf(value).dump());
    }
    return entries;
}

} // namespace

Diagnosis::Diagnosis(const Sysfs& tree)
{
    const auto& root = tree.root();
    addSection({"system", systemEntries()});
    addSection({"laptop", attributes(root / "class/dmi/id", machineAttributes)});
    constexpr std::array modelOfBoard{"model"};
    addSection({"board", attributes(root / "firmware/devicetree/base", modelOfBoard)});
    const auto supplies = root / "class/power_supply";
    for (const auto& name : namesIn(supplies)) {
        // A mouse or a headset has its address in its name.
        const auto scope = readFrom(openFolder(supplies / name), "scope");
        if (trimmed(scope.text) != "Device")
            addSection({shown(name), attributes(supplies / name, supplyAttributes)});
    }
    for (const auto& name : namesIn(root / "class/thermal", "thermal_zone"))
        addSection({shown(name), attributes(root / "class/thermal" / name, zoneAttributes)});
    Entries drivers;
    for (const auto* path : driverSwitches)
        if (openFolder(root / path)) drivers.emplace_back(path, "present");
    addSection({"drivers", std::move(drivers)});
}

void Diagnosis::add(const Snapshot& now)
{
    addSection({"daemon: state", of(now.state.archived())});
    auto charger = of(now.charger.archived());
    for (auto& [key, value] : charger)
        if (key == "LastActionDate") value = utcTime(now.charger.lastActionDate);
    addSection({"daemon: charger", std::move(charger)});
    addSection({"daemon: settings", of(archived(now.settings, settingsOf(Setting::Owner::machine)))});
    for (const auto& battery : now.batteries)
        addSection({"daemon: " + shown(battery.name.value_or("battery")), of(battery.archived())});
    Entries others;
    for (const auto& other : now.others) others.emplace_back(other, "active");
    addSection({"other programs", std::move(others)});
}

void Diagnosis::add(const std::vector<KeyedArchive>& actions)
{
    Entries entries;
    for (const auto& action : actions)
        entries.emplace_back(std::to_string(entries.size() + 1),
                             shown(utcTime(action.decodeDate("date").value_or(Date{})) + ' ' +
                                   action.decodeText("action", "") + ' ' + action.decodeText("reason", "")));
    addSection({"daemon: actions", std::move(entries)});
}

void Diagnosis::addAbsence(const std::string& why)
{
    addSection({"daemon", {{"answer", why}}});
}

void Diagnosis::addSection(Section section)
{
    if (!section.entries.empty()) sections_.push_back(std::move(section));
}

std::string Diagnosis::text() const
{
    std::string result;
    for (const auto& [name, entries] : sections_) {
        result += (result.empty() ? "[" : "\n[") + name + "]\n";
        for (const auto& [key, value] : entries) result.append(key).append(" = ").append(value) += '\n';
    }
    return result;
}

std::string Diagnosis::json() const
{
    Json result;
    for (const auto& [name, entries] : sections_)
        for (const auto& [key, value] : entries) result[name][key] = value;
    return jsonText(result) + '\n';
}

} // namespace velmora::ctl
