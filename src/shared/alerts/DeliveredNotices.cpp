// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "alerts/DeliveredNotices.h"

#include "base/Saturate.h"
#include "platform/Platform.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

namespace velmora {

namespace {

struct Kind {
    std::string_view preference; ///< whole seconds of a Date
    DeliveredNotices::Moment DeliveredNotices::*last;
    std::array<std::string_view, 4> identifiers;
};

constexpr std::array kinds{
    Kind{"lastLimitNotice",
         &DeliveredNotices::lastLimitNotice,
         {"charging_paused", "charging_resumed", "override_done", "limit_reached"}},
    Kind{"lastPowerNotice", &DeliveredNotices::lastPowerNotice, {"power_change"}},
    Kind{"lastHeatNotice", &DeliveredNotices::lastHeatNotice, {"thermal_pause"}},
    Kind{"lastCycleNotice", &DeliveredNotices::lastCycleNotice, {"cycle_completed"}},
    Kind{"lastLowBatteryNotice", &DeliveredNotices::lastLowBatteryNotice, {"low_battery"}},
    Kind{"lastTravelNotice", &DeliveredNotices::lastTravelNotice, {"smart_context_travel"}},
};

std::optional<Date> dateOf(const std::string& text)
{
    std::int64_t seconds = 0;
    const auto* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds);
    if (text.empty() || error != std::errc{} || rest != end) return std::nullopt;
    return Date{static_cast<double>(seconds)};
}

} // namespace

DeliveredNotices& DeliveredNotices::shared()
{
    return Platform::current().singleton<DeliveredNotices>();
}

DeliveredNotices::DeliveredNotices()
{
    for (const auto& kind : kinds)
        (this->*kind.last).set(dateOf(Platform::current().preferences->text(kind.preference)));
}

void DeliveredNotices::note(std::string_view identifier)
{
    for (const auto& kind : kinds) {
        if (std::ranges::find(kind.identifiers, identifier) == kind.identifiers.end()) continue;
        const Date now = Platform::current().clock->now();
        (this->*kind.last).set(now);
        Platform::current().preferences->setText(kind.preference,
                                                 std::to_string(truncated(now.sinceReference)));
    }
}

} // namespace velmora
