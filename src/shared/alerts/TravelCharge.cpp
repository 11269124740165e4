// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "alerts/TravelCharge.h"

#include "platform/Platform.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "TravelCharge";
constexpr std::chrono::minutes slack{1};

Date beginOf(const CalendarEvent& event)
{
    return event.start + -(event.isAllDay ? TravelCharge::leadTimeOfDay : TravelCharge::leadTime);
}

/// Of fixed length and without the title, which is nobody's business in a file of preferences.
std::string keyOf(const CalendarEvent& event)
{
    std::uint64_t hash = 0xcbf29ce484222325; // FNV-1a
    for (const char one : event.identifier) hash = (hash ^ static_cast<unsigned char>(one)) * 0x100000001b3;
    char key[17];
    std::snprintf(key, sizeof key, "%016llx", static_cast<unsigned long long>(hash));
    return key;
}

std::vector<std::string> split(std::string_view text)
{
    std::vector<std::string> parts;
    while (!text.empty()) {
        const auto end = std::min(text.find(','), text.size());
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

} // namespace

TravelCharge::TravelCharge(CalendarContextManager& calendar, Hands hands)
    : preferences_(Platform::current().preferences),
      isEnabled(preferences_->boolean(preference_key::isTravelChargeOn), nullptr,
                [this] { preferences_->set(preference_key::isTravelChargeOn, isEnabled.get()); }),
      calendar_(calendar),
      notices_(NotificationManager::shared()),
      hands_(std::move(hands)),
      loop_(Platform::current().mainLoop),
      clock_(Platform::current().clock),
      log_(Platform::current().log),
      remembered_(split(preferences_->text(preference_key::travelCharges)))
{
    const auto anew = [this](const auto&) {
        isRefused_ = false;
        considerSoon();
    };
    subscriptions_ = {calendar_.travelEvents.observe(anew), isEnabled.observe(anew),
                      Platform::current().notificationCenter->observeResponses(
                          [this](const auto& response) { responded(response); })};
}

void TravelCharge::considerSoon()
{
    if (std::exchange(isConsidering_, true)) return;
    loop_->post(lifetime_.guard([this] {
        isConsidering_ = false;
        consider();
    }));
}

void TravelCharge::consider()
{
    due_.reset();
    const auto charger = hands_.look();
    follow(charger);
    if (!isEnabled.get()) return show(Stage::none);
    const Date now = clock_->now();
    const CalendarEvent* next = nullptr;
    bool isAnyChargedFor = false;
    for (const auto& event : calendar_.travelEvents.get()) {
        if (event.start <= now) continue;
        if (isRemembered(event))
            isAnyChargedFor = true;
        else if (!next || beginOf(event) < beginOf(*next))
            next = &event;
    }
    if (!next) return show(isAnyChargedFor ? afterwards(charger) : Stage::none);
    if (const Date at = beginOf(*next); now < at) {
        show(Stage::scheduled, at);
        const auto wait = std::chrono::milliseconds(static_cast<std::int64_t>((at - now) * 1000) + 1);
        due_ = loop_->after(
            wait, [this] { consider(); }, slack);
    } else if (isAsking_) {
        return;
    } else if (charger && charger->isQuickChargeOn) {
        rememberDue();
        considerSoon();
    } else if (const auto why = hindrance(charger)) {
        show(*why);
    } else {
        begin(*next);
    }
}

void TravelCharge::show(Stage next, std::optional<Date> at)
{
    const std::string text(stageTexts.at(static_cast<std::size_t>(next)));
    if (stage.get() != text) stage.set(text);
    if (begins.get() != at) begins.set(at);
}

/// What is known of the charger changes what was said about it.
void TravelCharge::follow(const std::optional<Charger>& charger)
{
    if (charger && !isThere_) {
        // The daemon that was asked may have had no time to answer, or to begin.
        isRefused_ = isAsking_ = false;
        own_ = own_ == Own::begun ? Own::none : own_;
    }
    isThere_ = charger.has_value();
    if (!charger) return;
    if (charger->pause != Pause::none) isRefused_ = false; // that was why
    if (charger->isQuickChargeOn && own_ == Own::begun) own_ = Own::running;
    if (!charger->isQuickChargeOn && own_ == Own::running) own_ = Own::none;
}

std::optional<TravelCharge::Stage> TravelCharge::hindrance(const std::optional<Charger>& charger) const
{
    if (!charger) return Stage::refused;
    if (!charger->isOnMains) return Stage::unplugged;
    if (charger->pause == Pause::person) return Stage::paused;
    if (charger->pause == Pause::heat) return Stage::hot;
    if (charger->percentage >= fullLevel) return Stage::full;
    if (isRefused_) return Stage::refused;
    return std::nullopt;
}

/// For events that were charged for.
TravelCharge::Stage TravelCharge::afterwards(const std::optional<Charger>& charger) const
{
    if (own_ == Own::begun) return Stage::begun;
    if (!charger || !charger->isQuickChargeOn) return Stage::over;
    if (charger->pause == Pause::person) return Stage::paused;
    if (charger->pause == Pause::heat) return Stage::hot;
    return own_ == Own::running ? Stage::begun : Stage::quickCharge;
}

void TravelCharge::begin(const CalendarEvent& event)
{
    isAsking_ = true;
    hands_.begin(lifetime_.guard([this, event](bool isBegun) {
        isAsking_ = false;
        answered(event, isBegun);
    }));
}

void TravelCharge::answered(const CalendarEvent& event, bool isBegun)
{
    isRefused_ = !isBegun;
    if (isBegun) {
        log_->info(category, "A charge to 100 % has begun for \"" + event.title.value_or("") + "\".");
        own_ = Own::begun;
        if (!isRemembered(event)) remember(event);
        rememberDue();
        notices_.sendSmartContextTravelNotice(event.title);
    }
    considerSoon();
}

void TravelCharge::responded(const NotificationResponse& response)
{
    if (response.action != NotificationManager::cancelTravelCharge) return;
    follow(hands_.look());
    if (own_ != Own::running) return; // it is over; what may run now is a person's own
    log_->info(category, "The charge to 100 % was taken back.");
    hands_.takeBack();
}

bool TravelCharge::isRemembered(const CalendarEvent& event) const
{
    return std::ranges::find(remembered_, keyOf(event)) != remembered_.end();
}

/// One charge is enough for all that are due.
void TravelCharge::rememberDue()
{
    for (const auto& event : calendar_.travelEvents.get())
        if (beginOf(event) <= clock_->now() && !isRemembered(event)) remember(event);
}

void TravelCharge::remember(const CalendarEvent& event)
{
    remembered_.push_back(keyOf(event));
    if (remembered_.size() > maximumRemembered)
        remembered_.erase(remembered_.begin(), remembered_.end() - maximumRemembered);
    std::string all;
    for (const auto& one : remembered_) all += (all.empty() ? "" : ",") + one;
    preferences_->setText(preference_key::travelCharges, all);
}

} // namespace velmora
