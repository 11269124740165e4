// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/KeyedArchive.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velmora {

/// One battery of the laptop, as an object of its own tells of it on the bus, read-only: one property a key
/// of the archive.
///
/// What the laptop does not tell, or not believably, is left out: it is missing among all properties, to ask
/// for it alone is an error, and once it is no longer told it is announced as invalidated.
struct BatteryReport {
    static constexpr auto interface = "app.velmora.Battery";

    /// Texts of `state`.
    struct State {
        static constexpr std::string_view unknown = "unknown";
        static constexpr std::string_view charging = "charging";
        static constexpr std::string_view discharging = "discharging";
        static constexpr std::string_view notCharging = "not charging";
        static constexpr std::string_view full = "full";
    };

    std::optional<std::string> name{}; ///< of the supply: "BAT0"
    std::optional<std::string> state{};
    std::optional<double> percentage{};       ///< 0 to 100
    std::optional<double> power{};            ///< W, positive into the battery
    std::optional<double> energyNow{};        ///< Wh
    std::optional<double> energyFull{};       ///< Wh, when full
    std::optional<double> energyFullDesign{}; ///< Wh, when full, as it was made
    std::optional<double> voltage{};          ///< V, at the terminals
    std::optional<double> temperature{};      ///< degrees Celsius
    std::optional<double> health{};           ///< percent, full over design
    std::optional<std::int64_t> cycleCount{}; ///< full cycles
    std::optional<std::string> manufacturer{};
    std::optional<std::string> model{};

    /// Keys are the names of `batteryProperties`.
    KeyedArchive archived() const;
    static BatteryReport unarchived(const KeyedArchive& archive);

    friend bool operator==(const BatteryReport&, const BatteryReport&) = default;
};

/// A value of the report as a property of its interface.
struct BatteryProperty {
    using Member =
        std::variant<std::optional<std::int64_t> BatteryReport::*, std::optional<double> BatteryReport::*,
                     std::optional<std::string> BatteryReport::*>;

    const char* name;
    Member member;

    /// D-Bus signature.
    constexpr const char* type() const
    {
        constexpr std::array types{"x", "d", "s"}; // in the order of the variant
        static_assert(types.size() == std::variant_size_v<Member>);
        return types[member.index()];
    }
};

/// In the order in which they stand on the bus.
inline constexpr std::array batteryProperties{
    BatteryProperty{"Name", &BatteryReport::name},
    BatteryProperty{"State", &BatteryReport::state},
    BatteryProperty{"Percentage", &BatteryReport::percentage},
    BatteryProperty{"Power", &BatteryReport::power},
    BatteryProperty{"EnergyNow", &BatteryReport::energyNow},
    BatteryProperty{"EnergyFull", &BatteryReport::energyFull},
    BatteryProperty{"EnergyFullDesign", &BatteryReport::energyFullDesign},
    BatteryProperty{"Voltage", &BatteryReport::voltage},
    BatteryProperty{"Temperature", &BatteryReport::temperature},
    BatteryProperty{"Health", &BatteryReport::health},
    BatteryProperty{"CycleCount", &BatteryReport::cycleCount},
    BatteryProperty{"Manufacturer", &BatteryReport::manufacturer},
    BatteryProperty{"Model", &BatteryReport::model},
};

/// Where the batteries are found: an org.freedesktop.DBus.ObjectManager, with an object a battery below it
/// that has the supply's name.
namespace wire::battery {
inline constexpr auto folder = "/app/velmora/battery";
inline constexpr auto managerInterface = "org.freedesktop.DBus.ObjectManager";
inline constexpr auto getManagedObjects = "GetManagedObjects";
inline constexpr auto objectsType = "a{oa{sa{sv}}}";
} // namespace wire::battery

} // namespace velmora
