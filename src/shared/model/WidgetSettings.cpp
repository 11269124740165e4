// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/WidgetSettings.h"

#include "platform/Platform.h"

#include <charconv>
#include <string>

namespace velmora {

namespace {

std::optional<std::int32_t> coordinate(std::string_view text)
{
    std::int32_t value = 0;
    const auto* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    const bool isPossible = value >= WidgetPlace::lowest && value <= WidgetPlace::highest;
    if (error != std::errc() || stop != end || !isPossible) return std::nullopt;
    return value;
}

/// Of "12,-34".
std::optional<WidgetPlace> placeOf(std::string_view text)
{
    const auto comma = text.find(',');
    if (comma == text.npos) return std::nullopt;
    const auto x = coordinate(text.substr(0, comma));
    const auto y = coordinate(text.substr(comma + 1));
    if (!x || !y) return std::nullopt;
    return WidgetPlace{*x, *y};
}

std::string textOf(const std::optional<WidgetPlace>& place)
{
    return place ? std::to_string(place->x) + "," + std::to_string(place->y) : "";
}

} // namespace

WidgetSettings::WidgetSettings(std::string_view name)
    : preferences_(Platform::current().preferences),
      name_(name),
      isPinned(preferences_->boolean(key("isPinned")), nullptr,
               [this] { preferences_->set(key("isPinned"), isPinned.get()); }),
      isShownAtLogIn(preferences_->boolean(key("isShownAtLogIn")), nullptr,
                     [this] { preferences_->set(key("isShownAtLogIn"), isShownAtLogIn.get()); }),
      place(remembered(), nullptr, [this] { preferences_->setText(key("place"), textOf(place.get())); })
{
}

std::string WidgetSettings::key(const char* setting) const
{
    return name_ + "Widget_" + setting;
}

std::optional<WidgetPlace> WidgetSettings::remembered() const
{
    const auto text = preferences_->text(key("place"));
    const auto known = placeOf(text);
    if (!known && !text.empty())
        Platform::current().log->warning("WidgetSettings",
                                         "Ignored an invalid saved position of the " + name_ + " widget.");
    return known;
}

} // namespace velmora
