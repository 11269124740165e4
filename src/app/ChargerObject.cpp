// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ChargerObject.h"

#include <algorithm>

namespace velmora {

namespace wired = wire::face::charger;

namespace {

KeyedArchive::Value valueOf(const std::optional<ChargerReport>& report, std::string_view property)
{
    if (property == wired::isKnown) return report.has_value();
    const auto archive = report.value_or(ChargerReport{}).archived();
    return std::ranges::find(archive.values(), property, [](const auto& entry) { return entry.first; })
        ->second;
}

} // namespace

ChargerObject::ChargerObject(MainLoop& loop, sd_bus* bus, Report report)
    : face_(loop, bus, wired::objectPath, wired::interface, wired::properties)
{
    for (const auto& property : wired::properties)
        face_.derive(property.name, [report, name = property.name] { return valueOf(report(), name); });
    face_.serve();
}

} // namespace velmora
