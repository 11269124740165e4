// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "base/Observable.h"
#include "platform/CalendarStore.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/MainLoop.h"
#include "platform/WorkQueue.h"

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Whether the user travels within the next day, as the titles and places in the calendar say. It only tells;
/// what is done about it is TravelCharge's.
///
/// What it tells holds until the next scan, which reads calendars on a thread of its own. Main thread only,
/// but for `checkNow`.
class CalendarContextManager {
    Lifetime lifetime_;
    std::shared_ptr<CalendarStore> store_;

public:
    static constexpr std::chrono::minutes detectionInterval{30};
    static constexpr std::chrono::minutes detectionSlack{10};
    static constexpr double lookahead = 24 * duration::hour;
    static constexpr std::size_t maximumTravelEvents = 32;
    /// An event is travel if its title or place has one of these, in whatever case. The blank keeps
    /// "gateway" out.
    static constexpr std::array<std::string_view, 13> travelKeywords{
        "flight",     "fly",   "airport",   "travel", "trip",     "vacation", "holiday",
        "conference", "hotel", "departure", "gate ",  "terminal", "boarding"};

    /// The manager of this process.
    static CalendarContextManager& shared();

    /// On the current platform.
    CalendarContextManager();
    /// Ends a scan that is under way.
    ~CalendarContextManager();
    CalendarContextManager(const CalendarContextManager&) = delete;
    CalendarContextManager& operator=(const CalendarContextManager&) = delete;

    /// A scan has found a travel event.
    Observable<bool> isTravelDayDetected{false};
    Observable<bool> calendarAccessGranted{false};
    /// Title of the first event found; absent where it has none.
    Observable<std::optional<std::string>> detectedEventTitle{std::nullopt};
    /// All that the scan has found, by their start; `maximumTravelEvents` at most.
    Observable<std::vector<CalendarEvent>> travelEvents{{}};
    /// The last scan could read all calendars. For one that it could not, `travelEvents` has what the scan
    /// before it found there.
    Observable<bool> isLastScanWhole{true};

    /// Asks for access; once that is given, scans begin.
    void requestAccess();
    /// Looks whether calendars have come or gone since. Only that is told and logged.
    void followAccess();
    /// Gives access back: scans end, and nothing is detected any more.
    void endAccess();

    /// Scans on the calling thread, which may take many seconds, and returns whether there is travel. What is
    /// told follows on the main thread. Without access nothing changes.
    bool checkNow();

    /// Scans now and every half hour, on the manager's own thread.
    void startPeriodicDetection();
    void stopPeriodicDetection();
    /// Scans once more on that thread; does nothing before access was asked for.
    void checkSoon();

private:
    struct TravelDetectionResult {
        bool detected = false;
        std::optional<std::string> eventTitle{};
        std::vector<CalendarEvent> events{};
        bool isWhole = true;
    };

    void ask(bool isQuiet);
    std::optional<TravelDetectionResult> detectTravelDay();
    void answered(bool isGranted, const std::optional<std::string>& error);
    void publish(const TravelDetectionResult& result);
    void forget();

    std::shared_ptr<MainLoop> loop_;
    std::shared_ptr<Clock> clock_;
    std::shared_ptr<Log> log_;
    /// Counts what has ended access: an answer or a scan that began before that is not told.
    std::atomic<unsigned> accessPeriod_ = 0;
    std::atomic<bool> isScanDue_ = false; ///< one waits for the queue
    MainLoop::Timer detectionTimer_;
    std::unique_ptr<WorkQueue> queue_; ///< since access was asked for; last, so that its tasks have the rest
};

} // namespace velmora
