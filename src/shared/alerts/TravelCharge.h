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
/// has begun. On battery, with a full battery or while charging is paused it waits, as long as the event has
/// not begun. A quick charge that is on when an event is due is the event's as well: who ends it is not
/// overruled. An event that is moved stays the same. Main thread only.
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
        unplugged, ///< on battery
        full,      ///< there is nothing to charge
        paused,    ///< a person has paused charging
        hot,       ///< the battery cools down first
        refused,   ///< the daemon is not there, or does not let it; asked again after the next scan
        // Charged for:
        begun,       ///< its charge is under way
        quickCharge, ///< another quick charge is, which serves as well
        over,        ///< that has ended, or was taken back
    };
    static constexpr std::array<std::string_view, 10> stageTexts{
        "none", "scheduled", "unplugged", "full",         "paused",
        "hot",  "refused",   "begun",     "quick charge", "over"};
    enum class Pause : std::uint8_t { none, person, heat };

    /// The charger, as it was last heard of.
    struct Charger {
        bool isOnMains = false;
        double percentage = 0;
        bool isQuickChargeOn = false;
        Pause pause = Pause::none; ///< of all charging; lasts through a quick charge
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
    void follow(const std::optional<Charger>& charger);
    std::optional<Stage> hindrance(const std::optional<Charger>& charger) const;
    Stage afterwards(const std::optional<Charger>& charger) const;
    void begin(const CalendarEvent& event);
    void answered(const CalendarEvent& event, bool isBegun);
    void responded(const NotificationResponse& response);
    bool isRemembered(const CalendarEvent& event) const;
    void remember(const CalendarEvent& event);
    void rememberDue();

    /// The charge that was begun here.
    enum class Own : std::uint8_t {
        none,
        begun,   ///< the daemon's settings do not show it yet
        running, ///< they do
    };

    CalendarContextManager& calendar_;
    NotificationManager& notices_;
    Hands hands_;
    std::shared_ptr<MainLoop> loop_;
    std::shared_ptr<Clock> clock_;
    std::shared_ptr<Log> log_;
    std::vector<std::string> remembered_; ///< whose charge has begun, the latest last
    bool isConsidering_ = false;          ///< at the end of this turn
    bool isAsking_ = false;               ///< the daemon has not answered yet
    bool isRefused_ = false;              ///< until the next scan, another daemon or a pause
    bool isThere_ = false;                ///< the charger was, when last looked at
    Own own_ = Own::none;
    MainLoop::Timer due_;
    std::array<Subscription, 3> subscriptions_;
};

} // namespace velmora
