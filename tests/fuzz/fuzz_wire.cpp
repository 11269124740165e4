// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FuzzedMessage.h"
#include "bus/Records.h"
#include "wire/ChargeEvent.h"
#include "wire/VelmoraProtocol.h"

#include <cstdlib>

// Whatever well-formed message a peer composes, reading it as a record ends with a bounded record;
// and what was read survives being written and read again.

namespace {

using namespace velmora;

using fuzz::newMessage;
using fuzz::seal;

constexpr std::array keys{
    "percentage",       "isCharging",      "powerSource",  "timeToEmpty", "timestamp", "customChargeLimit",
    "customHysteresis", "lowBatteryLimit", "notifyOnHeat", "level",       "cycleCount"};

KeyedArchive sealedAndRead(const dbus::Message& message)
{
    seal(message);
    return dbus::readArchive(message.get());
}

bool isBounded(const KeyedArchive& archive)
{
    const auto isShort = [](const auto& entry) {
        const auto* text = std::get_if<std::string>(&entry.second);
        return !text || (text->size() <= dbus::maximumTextBytes && cleanUtf8(*text) == *text);
    };
    return archive.values().size() <= dbus::maximumKeys && std::ranges::all_of(archive.values(), isShort);
}

template <typename Record>
void requireSurvival(const Record& record)
{
    const auto message = newMessage();
    dbus::append(message.get(), record.archived());
    if (!(sealedAndRead(message) == record.archived())) std::abort();
}

/// Settings that come by their names: those that pass the checks are within range and survive the wire.
void requireSaneSettings(const KeyedArchive& archive)
{
    ChargingSettings settings;
    for (const auto& [name, value] : archive.values())
        if (const auto* setting = findSetting(name)) setting->assign(settings, value);
    if (problemWith(settings)) return;
    settings = clamped(settings);
    for (const auto& setting : allSettings) {
        const auto value = setting.of(settings);
        const auto* number = std::get_if<double>(&value);
        if (number && !(*number >= setting.lowest && *number <= setting.highest)) std::abort();
    }
    const auto message = newMessage();
    dbus::append(message.get(), settings);
    seal(message);
    if (!(dbus::readSettings(message.get()) == settings)) std::abort();
}

/// What is taken for an event has its value within range, and survives the wire. Its kind is one of few
/// texts, on which chance does not come.
void requireSaneEvent(const KeyedArchive& archive)
{
    for (const auto kind : chargeEventKinds) {
        KeyedArchive named;
        named.encode("kind", std::string(kind));
        for (const auto& [key, value] : archive.values()) named.encode(key, value);
        const auto event = ChargeEvent::unarchived(named);
        if (!event) continue;
        if (event->kind == ChargeEvent::Kind::levelLost && event->level > 100) std::abort();
        requireSurvival(*event);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    fuzz::Input input{bytes, size};
    const auto message = newMessage();
    fuzz::fillRecord(message.get(), input, keys);
    const auto archive = sealedAndRead(message);
    if (!isBounded(archive)) std::abort();
    requireSurvival(HSBatteryState(archive));
    requireSurvival(HSHistorySnapshot(archive, Date{}));
    requireSaneSettings(archive);
    requireSaneEvent(archive);
    return 0;
}
