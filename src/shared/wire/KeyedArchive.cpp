// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "wire/KeyedArchive.h"

#include "base/Wipe.h"

#include <algorithm>
#include <cmath>

namespace velmora {

double KeyedArchive::decodeDouble(std::string_view key, double otherwise) const
{
    const double value = decode(key, otherwise);
    return std::isfinite(value) ? value : otherwise;
}

std::string KeyedArchive::decodeText(std::string_view key, std::string otherwise) const
{
    return decode(key, std::move(otherwise));
}

std::optional<Date> KeyedArchive::decodeDate(std::string_view key) const
{
    const auto* value = find(key);
    const auto* seconds = value ? std::get_if<double>(value) : nullptr;
    return seconds && std::isfinite(*seconds) ? std::optional(Date{*seconds}) : std::nullopt;
}

void KeyedArchive::update(const KeyedArchive& news)
{
    for (const auto& [key, value] : news.values_) {
        const auto known = std::ranges::find(values_, key, &std::pair<std::string, Value>::first);
        if (known == values_.end())
            values_.emplace_back(key, value);
        else
            known->second = value;
    }
}

void KeyedArchive::wipe()
{
    for (auto& [key, value] : values_)
        if (auto* text = std::get_if<std::string>(&value)) velmora::wipe(*text);
    values_.clear();
}

const KeyedArchive::Value* KeyedArchive::find(std::string_view key) const
{
    const auto found = std::ranges::find(values_, key, &std::pair<std::string, Value>::first);
    return found == values_.end() ? nullptr : &found->second;
}

} // namespace velmora
