// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FakePlatform.h"
#include "alerts/DeliveredNotices.h"
#include "alerts/NotificationManager.h"
#include "alerts/NotificationService.h"
#include "alerts/NotificationStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace velmora {
namespace {

using testing::StartsWith;
using namespace std::chrono_literals;

struct NotificationsTest : testing::Test {
    FakePlatform machine;
    FakeNotificationCenter& center = *machine.notificationCenter;
};

TEST_F(NotificationsTest, EachNoticeOfTheManagerHasItsIdentifierAndLevel)
{
    using enum InterruptionLevel;
    using Manager = NotificationManager;
    const std::tuple<std::string, std::function<void(Manager&)>, InterruptionLevel> cases[] = {
        {"charging_paused", &Manager::sendChargingPausedNotice, passive},
        {"charging_resumed", &Manager::sendChargingResumedNotice, passive},
        {"low_battery", &Manager::sendLowBatteryNotice, active},
        {"thermal_pause", &Manager::sendThermalNotice, active},
        {"override_done", &Manager::sendOverrideCompleteNotice, passive},
        {"power_change", [](Manager& manager) { manager.sendPowerSourceNotice("AC Power"); }, passive},
        {"smart_context_travel", [](Manager& manager) { manager.sendSmartContextTravelNotice("x"); }, active},
    };
    auto& manager = NotificationManager::shared();
    for (const auto& [identifier, send, level] : cases) {
        SCOPED_TRACE(identifier);
        send(manager);
        const auto last = center.standing().back();
        EXPECT_THAT(last.identifier, StartsWith(identifier));
        EXPECT_EQ(last.identifier.size(), identifier.size() + 36) << "a UUID behind it";
        EXPECT_EQ(last.interruptionLevel, level);
        EXPECT_TRUE(last.hasDefaultSound);
    }
    EXPECT_EQ(center.delivered(), 7) << "one kind does not hold off another";
    machine.loop->advance(NotificationManager::cooldownPeriod);
    manager.sendSmartContextTravelNotice(std::nullopt);
    EXPECT_THAT(center.standing().back().body, testing::HasSubstr("\"a travel event\""));
}

TEST_F(NotificationsTest, AKindIsHeldOffForAQuarterOfAnHourAfterItsDelivery)
{
    auto& manager = NotificationManager::shared();
    center.deliveryError = "no server";
    manager.sendLowBatteryNotice();
    EXPECT_EQ(machine.log->count("Failed to send notification 'low_battery': no server"), 1U);
    center.deliveryError.reset();
    manager.sendLowBatteryNotice();
    EXPECT_EQ(center.delivered(), 1) << "what failed holds nothing off";
    machine.loop->advance(NotificationManager::cooldownPeriod - 1ms);
    manager.sendLowBatteryNotice();
    EXPECT_EQ(center.delivered(), 1);
    machine.loop->advance(1ms);
    manager.sendLowBatteryNotice();
    EXPECT_EQ(center.delivered(), 2);
}

TEST_F(NotificationsTest, NothingIsSentBeforeTheDesktopHasGivenLeave)
{
    center.holdsAnswers = true;
    auto& manager = NotificationManager::shared();
    manager.sendThermalNotice();
    EXPECT_EQ(center.delivered(), 0);
    center.answer();
    EXPECT_EQ(center.delivered(), 0) << "what was dropped is not sent later";
    manager.sendThermalNotice();
    EXPECT_EQ(center.delivered(), 1);

    center.isGranted = false;
    center.authorizationError = "refused";
    center.holdsAnswers = false;
    NotificationManager refused;
    refused.sendThermalNotice();
    EXPECT_EQ(machine.log->count("Notification authorization error: refused"), 1U);
    machine.platform.bundleIdentifier.clear();
    NotificationManager nameless;
    nameless.sendThermalNotice();
    EXPECT_EQ(machine.log->count("No Bundle ID found. Notifications disabled."), 1U);
    EXPECT_EQ(center.delivered(), 1);
}

/// For the thread sanitizer, above all.
TEST_F(NotificationsTest, TheCooldownHoldsAcrossThreads)
{
    auto& manager = NotificationManager::shared();
    manager.sendThermalNotice();
    std::vector<std::jthread> senders;
    for (int i = 0; i < 4; ++i)
        senders.emplace_back([&manager] {
            for (int j = 0; j < 100; ++j) {
                manager.sendThermalNotice();
                manager.sendLowBatteryNotice();
            }
        });
    senders.clear();
    const auto standing = center.standing();
    EXPECT_EQ(
        std::ranges::count_if(standing, [](const auto& one) { return one.title == "Thermal Protection"; }),
        1);
    EXPECT_LE(standing.size(), 5U) << "as many low-battery notices as senders before the first was taken";
}

TEST_F(NotificationsTest, TheServiceReplacesAndRemovesUnderTheCallersIdentifier)
{
    auto& service = NotificationService::shared();
    service.scheduleNotification("One", "first", "power_change");
    service.scheduleNotification("Two", "second", "power_change");
    ASSERT_EQ(center.standing().size(), 1U);
    EXPECT_EQ(center.standing().front(), (NotificationRequest{"power_change", "Two", "second"}));
    EXPECT_EQ(center.delivered(), 2) << "there is no cooldown";
    service.removeNotifications({});
    EXPECT_EQ(center.standing().size(), 1U);
    service.removeNotifications({"other", "power_change"});
    EXPECT_TRUE(center.standing().empty());

    center.deliveryError = "gone";
    service.scheduleNotification("Three", "", "low_battery");
    EXPECT_EQ(machine.log->count("Error scheduling notification 'low_battery': gone"), 1U);
    center.isGranted = false;
    center.authorizationError = "refused";
    service.requestPermissions();
    EXPECT_EQ(machine.log->count("Notification permission error: refused"), 1U);
}

TEST_F(NotificationsTest, TheLastDeliveryOfEachKindIsRememberedOverRestarts)
{
    NotificationManager::shared().sendOverrideCompleteNotice();
    NotificationService::shared().scheduleNotification("", "", "cycle_completed");
    center.deliveryError = "gone";
    NotificationManager::shared().sendThermalNotice();
    machine.settle();
    machine.loop->advance(90s);
    center.deliveryError.reset();
    NotificationService::shared().scheduleNotification("", "", "low_battery");
    NotificationService::shared().scheduleNotification("", "", "of no kind");
    machine.settle();
    machine.preferences->setText("lastPowerNotice", "12x");
    DeliveredNotices restarted;
    for (const auto* known : {&DeliveredNotices::shared(), &restarted}) {
        EXPECT_EQ(known->lastLimitNotice.get(), ManualClock::start);
        EXPECT_EQ(known->lastCycleNotice.get(), ManualClock::start);
        EXPECT_EQ(known->lastLowBatteryNotice.get(), ManualClock::start + 90);
        EXPECT_FALSE(known->lastHeatNotice.get()) << "it was not delivered";
        EXPECT_FALSE(known->lastPowerNotice.get());
    }
}

TEST_F(NotificationsTest, TheStatusFollowsTheServerAndSaysWhatBecameOfATest)
{
    NotificationStatus status;
    EXPECT_EQ(status.server.get(), "fake");
    center.now = {.name = "other", .isInhibited = true};
    center.serverChanges.emit();
    EXPECT_EQ(status.server.get(), "other");
    EXPECT_TRUE(status.isInhibited.get());
    for (const auto& error : {std::optional<std::string>("no room"), {}}) {
        center.deliveryError = error;
        status.sendTestNotice();
        EXPECT_FALSE(status.testResult.get()) << "on its way";
        machine.settle();
        EXPECT_EQ(status.testResult.get(), error.value_or(""));
    }
    EXPECT_EQ(center.standing().size(), 1U);
}

} // namespace
} // namespace velmora
