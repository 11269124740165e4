// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "WidgetSettings.h"

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

/// Has `keep` called with every new value.
template <typename T>
Subscription onChange(Observable<T>& value, std::function<void(const T&)> keep)
{
    return value.observe([&value, keep](const T& incoming) {
        if (incoming != value.get()) keep(incoming);
    });
}

} // namespace

WidgetSettings::WidgetSettings(std::string_view name)
{
    const auto preferences = Platform::current().preferences;
    const auto key = [&](const char* setting) { return std::string(name) + "Widget_" + setting; };
    const auto bindFlag = [&](Observable<bool>& flag, const std::string& itsKey) {
        flag.set(preferences->boolean(itsKey));
        return onChange<bool>(flag, [preferences, itsKey](bool value) { preferences->set(itsKey, value); });
    };
    pinnings_ = bindFlag(isPinned, key("isPinned"));
    logIns_ = bindFlag(isShownAtLogIn, key("isShownAtLogIn"));

    const auto remembered = preferences->text(key("place"));
    place.set(placeOf(remembered));
    if (!place.get() && !remembered.empty())
        Platform::current().log->warning("WidgetSettings", "where the " + std::string(name) +
                                                               " widget was is not to be understood");
    moves_ =
        onChange<std::optional<WidgetPlace>>(place, [preferences, itsKey = key("place")](const auto& to) {
            preferences->setText(itsKey, textOf(to));
        });
}

} // namespace velmora
