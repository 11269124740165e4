// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FuzzedMessage.h"
#include "bus/Records.h"
#include "link/AccountLink.h"
#include "link/Answers.h"
#include "link/FleetLink.h"
#include "link/Snapshot.h"
#include "output/AccountView.h"
#include "output/FleetView.h"
#include "output/Json.h"
#include "output/StatusView.h"
#include "output/WatchLine.h"
#include "wire/ModelFace.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <vector>

// Whatever a daemon answers, or an application that knows fleet and account, velmoractl shows text without a
// control character, or says in a Failure that it cannot be understood.

namespace {

using namespace velmora;

/// All names that there are, and the words among the values that mean something.
const std::vector<const char*> keys = [] {
    static std::string words =
        "percentage,isCharging,powerSource,thermalState,timeToFull,timeToEmpty,"
        "customHysteresis,customChargeLimit,date,Battery,not charging,deviceID,thresholds,"
        "fixed limit,end threshold,auto-protect,paused,55-60 or 80,unknown,deviceName,"
        "kind,server,host,port,lastUpdate,limitInForce,remoteChargeLimit,acceptsCommands,"
        "commandTaken,commandTimestamp,";
    std::ranges::replace(words, ',', '\0');
    std::vector<const char*> all;
    for (const char* word = words.data(); *word; word += std::strlen(word) + 1) all.push_back(word);
    for (const auto& property : chargerProperties) all.push_back(property.name);
    for (const auto& property : batteryProperties) all.push_back(property.name);
    return all;
}();

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

/// A value of that type, or of any.
void fillDeclared(sd_bus_message* message, fuzz::Input& input, std::string_view type)
{
    const auto count = input.take<std::uint8_t>() % 8;
    if (type.size() == 1 || count == 7) return fuzz::fillVariant(message, input, keys);
    sd_bus_message_open_container(message, 'v', std::string(type).c_str());
    if (type == wire::recordType) {
        fuzz::fillRecord(message, input, keys, 16);
    } else {
        sd_bus_message_open_container(message, 'a', std::string(type.substr(1)).c_str());
        for (int i = 0; i < count; ++i) {
            if (type == wire::recordListType) fuzz::fillRecord(message, input, keys, 16);
            if (type == "ad") sd_bus_message_append(message, "d", input.take<double>());
            if (type == "as") sd_bus_message_append(message, "s", input.text(keys).c_str());
        }
        sd_bus_message_close_container(message);
    }
    sd_bus_message_close_container(message);
}

/// All that an object of the application has, or a part of it.
dbus::Message object(fuzz::Input& input, const wire::face::Face& face)
{
    auto message = fuzz::newMessage();
    auto* raw = message.get();
    sd_bus_message_open_container(raw, 'a', "{sv}");
    for (int entries = input.take<std::uint8_t>() % 16; entries > 0; --entries) {
        const auto& property = face.properties[input.take<std::uint8_t>() % face.properties.size()];
        sd_bus_message_open_container(raw, 'e', "sv");
        sd_bus_message_append(raw, "s", property.name);
        fillDeclared(raw, input, property.type);
        sd_bus_message_close_container(raw);
    }
    sd_bus_message_close_container(raw);
    fuzz::seal(message);
    return message;
}

void requireHarmless(const std::string& text)
{
    const auto isControl = [](char byte) { return static_cast<unsigned char>(byte) < 0x20 && byte != '\n'; };
    if (std::ranges::any_of(text, isControl) || cleanUtf8(text) != text) std::abort();
}

void tryDaemon(fuzz::Input& input)
{
    ctl::Snapshot now{.state = HSBatteryState(ctl::readRecord(record(input))),
                      .charger = ChargerReport::unarchived(ctl::readRecord(record(input))),
                      .settings = unarchivedSettings(ctl::readRecord(record(input)))};
    now.batteries = ctl::readBatteries(objects(input));
    requireHarmless(ctl::statusText(now));
    requireHarmless(ctl::jsonText(ctl::statusJson(now)));
    requireHarmless(ctl::watchLine(now, true));
}

void tryFleet(fuzz::Input& input)
{
    const auto now = ctl::readFleet(object(input, wire::face::fleet::face));
    const Date time{input.take<double>()};
    requireHarmless(ctl::fleetText(now));
    requireHarmless(ctl::devicesText(now, time));
    requireHarmless(ctl::jsonText(ctl::fleetJson(now)));
    requireHarmless(ctl::jsonText(ctl::devicesJson(now)));
}

void tryAccount(fuzz::Input& input)
{
    const auto now = ctl::readAccount(object(input, wire::face::account::face));
    requireHarmless(ctl::accountText(now));
    requireHarmless(ctl::jsonText(ctl::accountJson(now)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
try {
    fuzz::Input input{bytes, size};
    constexpr std::array trials{tryDaemon, tryFleet, tryAccount};
    trials.at(input.take<std::uint8_t>() % trials.size())(input);
    return 0;
} catch (const ctl::Failure&) {
    return 0;
}
