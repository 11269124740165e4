// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/Records.h"

#include "base/Utf8.h"

#include <array>
#include <stdexcept>

namespace velmora::dbus {

namespace {

template <typename T>
T readBasic(sd_bus_message* message, char type)
{
    T value{};
    check(sd_bus_message_read_basic(message, type, &value), "read a value");
    return value;
}

/// The value of a variant that was entered, which holds one of the four types.
KeyedArchive::Value readValue(sd_bus_message* message, char type)
{
    switch (type) {
    case 'b':
        return readBasic<int>(message, type) != 0;
    case 'x':
        return readBasic<std::int64_t>(message, type);
    case 'd':
        return readBasic<double>(message, type);
    default:
        return std::string(utf8Prefix(readBasic<const char*>(message, type), maximumTextBytes));
    }
}

/// `contents` of the variant ahead, if it is one of the four types.
bool isTaken(const char* contents)
{
    constexpr std::string_view taken = "bxds";
    return contents && contents[0] != '\0' && contents[1] == '\0' && taken.find(contents[0]) != taken.npos;
}

/// Reads one key and its value; false where not all of it is in the archive now.
bool readEntry(sd_bus_message* message, KeyedArchive& archive)
{
    const char* key = readBasic<const char*>(message, 's');
    const char* contents = nullptr;
    check(sd_bus_message_peek_type(message, nullptr, &contents), "look at a value");
    if (archive.values().size() >= maximumKeys || !isTaken(contents)) {
        check(sd_bus_message_skip(message, "v"), "skip a value");
        return false;
    }
    const char type = contents[0];
    std::string name(utf8Prefix(key, maximumTextBytes));
    check(sd_bus_message_enter_container(message, 'v', contents), "enter a value");
    archive.encode(std::move(name), readValue(message, type));
    check(sd_bus_message_exit_container(message), "leave a value");
    const auto* text = std::get_if<std::string>(&archive.values().back().second);
    return !text || text->size() < maximumTextBytes;
}

/// Reads a record; `passedOver` is called for each entry that is not wholly in it.
KeyedArchive readEntries(sd_bus_message* message, void (*passedOver)())
{
    KeyedArchive archive;
    check(sd_bus_message_enter_container(message, 'a', "{sv}"), "enter a record");
    while (check(sd_bus_message_enter_container(message, 'e', "sv"), "enter an entry") > 0) {
        if (!readEntry(message, archive)) passedOver();
        check(sd_bus_message_exit_container(message), "leave an entry");
    }
    check(sd_bus_message_exit_container(message), "leave a record");
    return archive;
}

} // namespace

char typeOf(const KeyedArchive::Value& value)
{
    constexpr std::array types{'b', 'x', 'd', 's'}; // in the order of the variant
    static_assert(types.size() == std::variant_size_v<KeyedArchive::Value>);
    return types[value.index()];
}

void append(sd_bus_message* message, const KeyedArchive::Value& value)
{
    const auto basic = [&](const void* from) {
        check(sd_bus_message_append_basic(message, typeOf(value), from), "append a value");
    };
    if (const auto* text = std::get_if<std::string>(&value))
        basic(cleanUtf8(*text).c_str());
    else if (const auto* truth = std::get_if<bool>(&value))
        basic(std::array{int{*truth}}.data());
    else if (const auto* integer = std::get_if<std::int64_t>(&value))
        basic(integer);
    else
        basic(&std::get<double>(value));
}

void append(sd_bus_message* message, const KeyedArchive& archive)
{
    check(sd_bus_message_open_container(message, 'a', "{sv}"), "open a record");
    for (const auto& [key, value] : archive.values()) {
        const char type[] = {typeOf(value), '\0'};
        check(sd_bus_message_open_container(message, 'e', "sv"), "open an entry");
        check(sd_bus_message_append_basic(message, 's', cleanUtf8(key).c_str()), "append a key");
        check(sd_bus_message_open_container(message, 'v', type), "open a value");
        append(message, value);
        check(sd_bus_message_close_container(message), "close a value");
        check(sd_bus_message_close_container(message), "close an entry");
    }
    check(sd_bus_message_close_container(message), "close a record");
}

void append(sd_bus_message* message, const ChargingSettings& settings)
{
    for (const auto& setting : allSettings) append(message, setting.of(settings));
}

KeyedArchive readArchive(sd_bus_message* message)
{
    return readEntries(message, [] {});
}

KeyedArchive readWholeArchive(sd_bus_message* message)
{
    return readEntries(message, [] {
        throw std::invalid_argument("a record takes short texts, switches and numbers (s, b, d, x), and few");
    });
}

ChargingSettings readSettings(sd_bus_message* message)
{
    ChargingSettings settings;
    for (const auto& setting : allSettings) {
        int truth = 0;
        double number = 0;
        void* const place = setting.isNumber() ? static_cast<void*>(&number) : &truth;
        check(sd_bus_message_read_basic(message, *setting.type(), place), setting.name);
        setting.assign(settings, setting.isNumber() ? KeyedArchive::Value(number) : truth != 0);
    }
    return settings;
}

} // namespace velmora::dbus
