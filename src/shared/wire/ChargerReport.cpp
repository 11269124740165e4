// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "wire/ChargerReport.h"

namespace velmora {

namespace {

/// Replaces a value by the archived one, where there is one of its type.
struct Reader {
    const KeyedArchive& archive;

    void operator()(const char* key, bool& value) const { value = archive.decodeBool(key, value); }
    void operator()(const char* key, std::int64_t& value) const { value = archive.decodeInteger(key, value); }
    void operator()(const char* key, double& value) const { value = archive.decodeDouble(key, value); }
    void operator()(const char* key, std::string& value) const { value = archive.decodeText(key, value); }
    void operator()(const char* key, Date& value) const { value = archive.decodeDate(key).value_or(value); }
};

} // namespace

KeyedArchive ChargerReport::archived() const
{
    KeyedArchive archive;
    for (const auto& [name, member] : chargerProperties)
        std::visit([&, key = name](auto value) { archive.encode(key, this->*value); }, member);
    return archive;
}

KeyedArchive ChargerAction::archived() const
{
    KeyedArchive archive;
    archive.encode("date", date);
    archive.encode("action", action);
    archive.encode("reason", reason);
    return archive;
}

ChargerReport ChargerReport::unarchived(const KeyedArchive& archive)
{
    ChargerReport report;
    const Reader read{archive};
    for (const auto& [name, member] : chargerProperties)
        std::visit([&, key = name](auto value) { read(key, report.*value); }, member);
    return report;
}

} // namespace velmora
