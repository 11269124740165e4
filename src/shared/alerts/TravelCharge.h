// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "alerts/CalendarContextManager.h"
#include "alerts/NotificationManager.h"
#include "platform/Preferences.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Charges to 100 % before a journey that the calendar tells of, where the user has switched that on: ten
/// hours before it, or at eight in the evening before a whole day. Once for each event, and not for one that
/// has begun. On battery, beside a quick charge, or with a full battery it waits, as long as the event has
/// not begun. An event that is moved stays the same. Main thread only.
class TravelCharge {
    Lifetime lifetime_;
    std::shared_ptr<Preferences> preferences_;

public:
    static constexpr double leadTime = 10 * duration::hour;
    static constexpr double leadTimeOfDay = 4 * duration::hour; ///< before its midnight
    static constexpr std::size_t maximumRemembered = 64;        ///< events
    /// Percent: above it a charger takes no charge.
    static constexpr double fullLevel = 99;

    /// What becomes of the next journey.
    enum class Stage : std::uint8_t {
        none,      ///< there is no journey, or this is switched off
        scheduled, ///< it charges at `begins`
        // Due, but
        unplugged,   ///< on battery
        quickCharge, ///< a quick charge is under way already
        full,        ///< there is nothing to charge
        refused,     ///< the daemon is not there, or does not let it; asked again after the next scan
        begun,       ///< its charge has begun, or was over
    };
    static constexpr std::array<std::string_view, 7> stageTexts{
        "none", "scheduled", "unplugged", "quick charge", "full", "refused", "begun"};

    /// The charger, as it was last heard of.
    struct Charger {
        bool isOnMains = false;
        double percentage = 0;
        bool isQuickChargeOn = false;
    };
    struct Hands {
        std::function<std::optional<Charger>()> look; ///< nothing without a daemon
        /// Asks the daemon to begin, and answers whether a charge is under way; once, or never.
        std::function<void(std::function<void(bool isBegun)>)> begin;
        std::function<void()> takeBack;
    };

    /// `calendar` must outlive this, as must what the hands touch.
    TravelCharge(CalendarContextManager& calendar, Hands hands);
    TravelCharge(const TravelCharge&) = delete;
    TravelCharge& operator=(const TravelCharge&) = delete;

    Observable<bool> isEnabled;
    Observable<std::string> stage{std::string(stageTexts[0])}; ///< one of `stageTexts`
    Observable<std::optional<Date>> begins{std::nullopt};      ///< while it is scheduled

    /// Something that `look` tells may have changed.
    void chargerChanged() { considerSoon(); }

private:
    void considerSoon();
    void consider();
    void show(Stage next, std::optional<Date> at = std::nullopt);
    std::optional<Stage> hindrance() const;
    void begin(const CalendarEvent& event);
    void answered(const CalendarEvent& event, bool isBegun);
    void responded(const NotificationResponse& response);
    bool isRemembered(const CalendarEvent& event) const;
    void remember(const CalendarEvent& event);

    CalendarContextManager& calendar_;
    NotificationManager& notices_;
    Hands hands_;
    std::shared_ptr<MainLoop> loop_;
    std::shared_ptr<Clock> clock_;
    std::shared_ptr<Log> log_;
    std::vector<std::string> remembered_; ///< whose charge has begun, the latest last
    bool isConsidering_ = false;          ///< at the end of this turn
    bool isAsking_ = false;               ///< the daemon has not answered yet
    bool isRefused_ = false;              ///< until the next scan
    MainLoop::Timer due_;
    std::array<Subscription, 3> subscriptions_;
};

} // namespace velmora
