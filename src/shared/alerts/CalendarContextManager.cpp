// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "alerts/CalendarContextManager.h"

#include "platform/Platform.h"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "CalendarContextManager";

/// The keywords are ASCII, so that the letters of other scripts may stay as they are.
std::string lowerCase(std::string_view text)
{
    std::string result(text);
    for (char& one : result)
        if (one >= 'A' && one <= 'Z') one = static_cast<char>(one - 'A' + 'a');
    return result;
}

bool isTravel(const CalendarEvent& event)
{
    const auto text = lowerCase(event.title.value_or("")) + " " + lowerCase(event.location);
    return std::ranges::any_of(CalendarContextManager::travelKeywords,
                               [&](auto keyword) { return text.find(keyword) != text.npos; });
}

} // namespace

CalendarContextManager& CalendarContextManager::shared()
{
    return Platform::current().singleton<CalendarContextManager>();
}

CalendarContextManager::CalendarContextManager()
    : store_(Platform::current().calendarStore),
      loop_(Platform::current().mainLoop),
      clock_(Platform::current().clock),
      log_(Platform::current().log)
{
}

CalendarContextManager::~CalendarContextManager()
{
    ++accessPeriod_;
    store_->relinquishAccess();
}

void CalendarContextManager::requestAccess()
{
    store_->permit(); // on this thread, so that it cannot come after its end
    ask(false);
}

void CalendarContextManager::followAccess()
{
    if (queue_) ask(true);
}

void CalendarContextManager::ask(bool isQuiet)
{
    if (!queue_) queue_ = Platform::current().makeWorkQueue("velmora-calendar");
    const auto told = [this, isQuiet, period = accessPeriod_.load()](bool isGranted, const auto& error) {
        loop_->post(lifetime_.guard([this, isQuiet, period, isGranted, error] {
            const bool isNews = !isQuiet || isGranted != calendarAccessGranted.get();
            if (period == accessPeriod_ && isNews) answered(isGranted, error);
        }));
    };
    const bool wasGranted = calendarAccessGranted.get();
    queue_->async([this, told, isQuiet, wasGranted, period = accessPeriod_.load()] {
        if (period != accessPeriod_) return;
        const bool isReadable = store_->authorizationStatus() == CalendarStore::Authorization::fullAccess;
        if (!isQuiet || !wasGranted || !isReadable) store_->requestFullAccess(told);
    });
}

void CalendarContextManager::answered(bool isGranted, const std::optional<std::string>& error)
{
    calendarAccessGranted.set(isGranted);
    if (!isGranted) forget();
    if (error) return log_->error(category, "CalendarContext: access request failed — " + *error);
    if (!isGranted) return log_->info(category, "CalendarContext: access denied by user");
    log_->info(category, "CalendarContext: access granted");
    startPeriodicDetection();
}

void CalendarContextManager::endAccess()
{
    ++accessPeriod_;
    store_->relinquishAccess();
    calendarAccessGranted.set(false);
    forget();
}

void CalendarContextManager::forget()
{
    stopPeriodicDetection();
    publish({});
}

bool CalendarContextManager::checkNow()
{
    if (store_->authorizationStatus() != CalendarStore::Authorization::fullAccess) return false;
    const auto period = accessPeriod_.load();
    const auto result = detectTravelDay();
    if (!result) return false;
    loop_->post(lifetime_.guard([this, period, result = *result] {
        if (period == accessPeriod_) publish(result);
    }));
    if (!result->detected) return false;
    log_->info(category,
               "CalendarContext: travel day detected — \"" + result->eventTitle.value_or("unknown") + "\"");
    return true;
}

std::optional<CalendarContextManager::TravelDetectionResult> CalendarContextManager::detectTravelDay()
{
    const Date now = clock_->now();
    auto reading = store_->events(now, now + lookahead, isTravel);
    if (!reading) return std::nullopt;
    auto& events = reading->events;
    if (events.size() > maximumTravelEvents) events.resize(maximumTravelEvents);
    TravelDetectionResult result{
        .detected = !events.empty(), .events = std::move(events), .isWhole = reading->isWhole};
    if (result.detected) result.eventTitle = result.events.front().title;
    return result;
}

void CalendarContextManager::publish(const TravelDetectionResult& result)
{
    isTravelDayDetected.set(result.detected);
    detectedEventTitle.set(result.eventTitle);
    travelEvents.set(result.events);
    isLastScanWhole.set(result.isWhole);
}

void CalendarContextManager::startPeriodicDetection()
{
    stopPeriodicDetection();
    if (!queue_) queue_ = Platform::current().makeWorkQueue("velmora-calendar");
    checkSoon();
    detectionTimer_ = loop_->every(
        detectionInterval, [this] { checkSoon(); }, detectionSlack);
}

void CalendarContextManager::stopPeriodicDetection()
{
    detectionTimer_.reset();
}

void CalendarContextManager::checkSoon()
{
    if (!queue_ || isScanDue_.exchange(true)) return;
    queue_->async([this] {
        isScanDue_ = false;
        checkNow();
    });
}

} // namespace velmora
