// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FuzzedMessage.h"
#include "bus/Records.h"
#include "link/Answers.h"
#include "link/Snapshot.h"
#include "output/Json.h"
#include "output/StatusView.h"
#include "output/WatchLine.h"

#include <cstdlib>
#include <nlohmann/json.hpp>

// Whatever a daemon answers, velmoractl shows text without a control character, or says in a Failure that it
// cannot be understood.

namespace {

using namespace velmora;

constexpr std::array keys{"percentage",
                          "isCharging",
                          "powerSource",
                          "thermalState",
                          "timeToFull",
                          "timeToEmpty",
                          "HasBattery",
                          "Control",
                          "Driver",
                          "Mode",
                          "StartThreshold",
                          "EndThreshold",
                          "FixedLimit",
                          "LastAction",
                          "LastActionDate",
                          "fixed limit",
                          "thresholds",
                          "end threshold",
                          "auto-protect",
                          "paused",
                          "55-60 or 80",
                          "unknown",
                          "customHysteresis",
                          "Battery",
                          "Name",
                          "WantedStartThreshold",
                          "WantedEndThreshold",
                          "Percentage",
                          "Power",
                          "EnergyNow",
                          "Voltage",
                          "Temperature",
                          "Health",
                          "CycleCount",
                          "Manufacturer",
                          "State",
                          "date",
                          "customChargeLimit",
                          "not charging"};

dbus::Message record(fuzz::Input& input)
{
    auto message = fuzz::newMessage();
    fuzz::fillRecord(message.get(), input, keys, input.take<std::uint8_t>() % 32);
    fuzz::seal(message);
    return message;
}

/// Objects with an interface each, or what is no such thing at all.
dbus::Message objects(fuzz::Input& input)
{
    auto message = fuzz::newMessage();
    auto* raw = message.get();
    if (input.take<std::uint8_t>() == 0) {
        sd_bus_message_append(raw, "ax", 1, std::int64_t{7});
    } else {
        sd_bus_message_open_container(raw, 'a', "{oa{sa{sv}}}");
        for (int count = input.take<std::uint8_t>() % 40; count > 0; --count) {
            sd_bus_message_open_container(raw, 'e', "oa{sa{sv}}");
            sd_bus_message_append(raw, "o", "/app/velmora/battery/x");
            sd_bus_message_open_container(raw, 'a', "{sa{sv}}");
            sd_bus_message_open_container(raw, 'e', "sa{sv}");
            sd_bus_message_append(raw, "s", BatteryReport::interface);
            fuzz::fillRecord(raw, input, keys, input.take<std::uint8_t>() % 16);
            for (int depth = 0; depth < 3; ++depth) sd_bus_message_close_container(raw);
        }
        sd_bus_message_close_container(raw);
    }
    fuzz::seal(message);
    return message;
}

void requireHarmless(const std::string& text)
{
    const auto isControl = [](char byte) { return static_cast<unsigned char>(byte) < 0x20 && byte != '\n'; };
    if (std::ranges::any_of(text, isControl) || cleanUtf8(text) != text) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
try {
    fuzz::Input input{bytes, size};
    ctl::Snapshot now{.state = HSBatteryState(ctl::readRecord(record(input))),
                      .charger = ChargerReport::unarchived(ctl::readRecord(record(input))),
                      .settings = unarchivedSettings(ctl::readRecord(record(input)))};
    now.batteries = ctl::readBatteries(objects(input));
    requireHarmless(ctl::statusText(now));
    requireHarmless(ctl::jsonText(ctl::statusJson(now)));
    requireHarmless(ctl::watchLine(now, true));
    return 0;
} catch (const ctl::Failure&) {
    return 0;
}
