// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "alerts/NotificationManager.h"

#include "alerts/DeliveredNotices.h"
#include "base/Translation.h"
#include "base/Uuid.h"
#include "platform/Platform.h"

#include <utility>

namespace velmora {

namespace {

constexpr auto category = "NotificationManager";
using enum InterruptionLevel;

} // namespace

NotificationManager& NotificationManager::shared()
{
    return Platform::current().singleton<NotificationManager>();
}

NotificationManager::NotificationManager()
    : center_(Platform::current().notificationCenter),
      clock_(Platform::current().clock),
      log_(Platform::current().log),
      loop_(Platform::current().mainLoop)
{
    requestAuthorization();
}

void NotificationManager::requestAuthorization()
{
    if (Platform::current().bundleIdentifier.empty())
        return log_->error(category, "No Bundle ID found. Notifications disabled.");
    center_->requestAuthorization(
        [weak = std::weak_ptr(state_), log = log_](bool isGranted, const auto& error) {
            if (const auto state = weak.lock()) state->isAuthorized = isGranted;
            if (error) log->error(category, "Notification authorization error: " + *error);
        });
}

void NotificationManager::sendChargingPausedNotice()
{
    send("charging_paused", tr("Charging Paused"), tr("Battery protected at your target. Running on AC."),
         passive);
}

void NotificationManager::sendChargingResumedNotice()
{
    send("charging_resumed", tr("Charging Resumed"),
         tr("Battery dropped below threshold. Re-engaging charging."), passive);
}

void NotificationManager::tellLowBattery(const Outcome& told)
{
    send("low_battery", tr("Low Battery"),
         tr("Battery at 20%. Please connect to power to preserve lifespan."), active, {}, told);
}

void NotificationManager::sendThermalNotice()
{
    send("thermal_pause", tr("Thermal Protection"), tr("Charging paused until battery cools down."), active);
}

void NotificationManager::sendOverrideCompleteNotice()
{
    send("override_done", tr("Full Charge Reached"), tr("Charged to 100%. Resuming health mode."), passive);
}

void NotificationManager::sendPowerSourceNotice(const std::string& source)
{
    send("power_change", tr("Power Source Changed"), tr("Your Mac is now running on %1.", source), passive);
}

void NotificationManager::sendSmartContextTravelNotice(const std::optional<std::string>& eventTitle)
{
    send("smart_context_travel", tr("Charging to 100% for Travel"),
         tr("Velmora detected \"%1\" in your calendar and is allowing a full charge.",
            eventTitle.value_or(tr("a travel event"))),
         active, {{cancelTravelCharge, tr("Do not charge")}});
}

bool NotificationManager::isDue(const std::string& id) const
{
    const auto last = lastSent(id);
    return isAuthorized() && (!last || clock_->sinceBoot() - *last >= cooldownPeriod);
}

void NotificationManager::send(const std::string& id, std::string title, std::string body,
                               InterruptionLevel priority, std::vector<NotificationAction> actions,
                               const Outcome& told)
{
    const auto tell = [loop = loop_, told](bool isTaken) {
        if (told) loop->post([told, isTaken] { told(isTaken); });
    };
    if (!isDue(id)) return tell(false);
    NotificationRequest request{.identifier =
                                    id + makeUuid(), // so that no earlier one of its kind is replaced
                                .title = std::move(title),
                                .body = std::move(body),
                                .interruptionLevel = priority,
                                .actions = std::move(actions)};
    center_->add(std::move(request), [id, tell, weak = std::weak_ptr(state_), clock = clock_, log = log_,
                                      loop = loop_](const auto& error) {
        tell(!error);
        if (error) return log->error(category, "Failed to send notification '" + id + "': " + *error);
        const auto state = weak.lock();
        if (!state) return;
        loop->post([id] { DeliveredNotices::shared().note(id); });
        const MutexLock lock(state->mutex);
        state->lastSentTimestamps.insert_or_assign(id, clock->sinceBoot());
    });
}

std::optional<std::chrono::milliseconds> NotificationManager::lastSent(const std::string& id) const
{
    const MutexLock lock(state_->mutex);
    const auto found = state_->lastSentTimestamps.find(id);
    if (found == state_->lastSentTimestamps.end()) return std::nullopt;
    return found->second;
}

} // namespace velmora
