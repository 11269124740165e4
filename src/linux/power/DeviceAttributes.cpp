// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/DeviceAttributes.h"

#include <system_error>

namespace velmora {

namespace {

std::string trimmed(const std::string& text)
{
    constexpr auto blanks = " \t\r\n\v\f";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace

void DeviceAttributes::complain(std::string_view name, const std::string& what) const
{
    const auto attribute = (folder_ / name).string();
    complaints_.raise(attribute, attribute + ' ' + what);
}

std::optional<std::string> DeviceAttributes::text(std::string_view name) const
{
    const auto read = sysfs_.read(folder_ / name);
    if (read.error == 0) return trimmed(read.text);
    if (!read.isAbsent()) complain(name, "cannot be read: " + std::generic_category().message(read.error));
    return std::nullopt;
}

std::optional<std::int64_t> DeviceAttributes::integer(std::string_view name) const
{
    const auto value = text(name);
    if (!value) return std::nullopt;
    const auto number = parseInteger(*value);
    if (!number) complain(name, "is no whole number: '" + value->substr(0, 40) + '\'');
    return number;
}

} // namespace velmora
