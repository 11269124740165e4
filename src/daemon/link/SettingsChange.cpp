// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/SettingsChange.h"

#include "base/Utf8.h"

namespace velmora {

namespace {

constexpr std::size_t maximumQuoted = 64; ///< bytes of a caller's own text in the answer

std::string quoted(const char* text)
{
    return '"' + std::string(utf8Prefix(text, maximumQuoted)) + '"';
}

void readValue(sd_bus_message* call, const Setting& setting, ChargingSettings& values)
{
    int truth = 0;
    double number = 0;
    if (setting.isNumber()) {
        dbus::check(sd_bus_message_read(call, "v", "d", &number), setting.name);
        setting.assign(values, number);
    } else {
        dbus::check(sd_bus_message_read(call, "v", "b", &truth), setting.name);
        setting.assign(values, truth != 0);
    }
}

/// What is wrong with the entry; empty for a good one.
std::string readEntry(sd_bus_message* call, SettingsChange& change)
{
    const char* name = nullptr;
    dbus::check(sd_bus_message_read_basic(call, 's', &name), "read a name");
    const auto* setting = findSetting(name);
    if (!setting) return "there is no setting " + quoted(name);
    auto field = change.fields[static_cast<std::size_t>(setting - allSettings.data())];
    if (field) return std::string(setting->name) + " is given twice";
    field = true;
    const char* type = nullptr;
    dbus::check(sd_bus_message_peek_type(call, nullptr, &type), "look at a value");
    if (type != std::string_view(setting->type()))
        return std::string(setting->name) + " is of type " + quoted(type) + " instead of " +
               quoted(setting->type());
    readValue(call, *setting, change.values);
    return {};
}

} // namespace

std::variant<SettingsChange, std::string> readSettingsChange(sd_bus_message* call)
{
    SettingsChange change;
    dbus::check(sd_bus_message_enter_container(call, 'a', "{sv}"), "enter the changes");
    while (dbus::check(sd_bus_message_enter_container(call, 'e', "sv"), "enter a change") > 0) {
        auto problem = readEntry(call, change);
        if (!problem.empty()) return problem;
        dbus::check(sd_bus_message_exit_container(call), "leave a change");
    }
    return change;
}

} // namespace velmora
