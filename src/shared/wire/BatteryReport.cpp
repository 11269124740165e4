// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "wire/BatteryReport.h"

#include <cmath>

namespace velmora {

namespace {

/// Takes over the archived value, where there is one of its type; a number must be finite.
struct Reader {
    const KeyedArchive& archive;

    template <typename T>
    void operator()(const char* key, std::optional<T>& value) const
    {
        const auto* found = archive.find(key);
        const auto* typed = found ? std::get_if<T>(found) : nullptr;
        if constexpr (std::is_same_v<T, double>)
            if (typed && !std::isfinite(*typed)) return;
        if (typed) value = *typed;
    }
};

} // namespace

KeyedArchive BatteryReport::archived() const
{
    KeyedArchive archive;
    for (const auto& property : batteryProperties) {
        const auto encode = [&](auto member) {
            if (const auto& value = this->*member) archive.encode(property.name, *value);
        };
        std::visit(encode, property.member);
    }
    return archive;
}

BatteryReport BatteryReport::unarchived(const KeyedArchive& archive)
{
    BatteryReport report;
    const Reader read{archive};
    for (const auto& property : batteryProperties)
        std::visit([&](auto member) { read(property.name, report.*member); }, property.member);
    return report;
}

} // namespace velmora
