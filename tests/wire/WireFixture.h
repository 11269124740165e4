// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "LoopTest.h"
#include "Peer.h"
#include "PrivateBus.h"
#include "RecordingLog.h"
#include "base/SystemClock.h"
#include "link/DaemonObject.h"
#include "link/XPCClient.h"

namespace velmora {

/// A daemon that does nothing but remember what reached it.
struct RecordingService final : DaemonService {
    HSBatteryState state{79.5, true, "AC Power", "Fair", 80, 2, 42, -1, false};
    std::vector<HSHistorySnapshot> history{{Date{700'000'000.25}, 50.5, 97.25, "Nominal", true},
                                           {Date{700'000'900.1}, 51, 97.5, "Serious", false}};
    std::vector<BatteryReport> packs;
    std::vector<ChargerAction> actions;
    ChargerReport report{.hasBattery = true, .batteries = "BAT0", .endThreshold = 80};
    std::vector<std::string> deeds; ///< "70 by 0" for a limit, "toggle by 0!" where a person may be asked
    ChargingSettings held{.isAppleRecommendedMode = false, .lowBatteryLimit = 15};
    std::vector<ChargingSettings> received;
    std::vector<std::string> callers, left;

    std::function<void()> looks = [] {}; ///< what a look makes of the above

    void ask(std::function<void()> answer) override
    {
        looks();
        answer();
    }
    HSBatteryState batteryState() override { return state; }
    const std::vector<HSHistorySnapshot>& analyticsHistory() override { return history; }
    ChargerReport charger() override { return report; }
    const std::vector<BatteryReport>& batteries() override { return packs; }
    const std::vector<ChargerAction>& chargerActions() override { return actions; }
    void updateSettings(const Caller& caller, const ChargingSettings& wanted) override
    {
        received.push_back(wanted);
        note(std::to_string(static_cast<int>(wanted.customChargeLimit)), caller);
    }
    ChargingSettings settings(const Caller&) override { return held; }
    void changeSettings(const Caller& caller, const SettingsChange& change, SettingsReply reply) override
    {
        updateSettings(caller, combined(held, change.values, change.fields));
        reply(Refusal{Refused::denied, "not for you"});
    }
    void controlCharging(const Caller& caller, ChargingCommand, ChargingReply reply) override
    {
        note("toggle", caller);
        reply(true);
    }
    void beginTravelCharge(const Caller& caller, ChargingReply reply) override
    {
        note("travel", caller);
        reply(true);
    }
    void callerLeft(const std::string& busName) override { left.push_back(busName); }

    void note(const std::string& deed, const Caller& caller)
    {
        deeds.push_back(deed + " by " + std::to_string(caller.uid) + (caller.mayInteract ? "!" : ""));
        callers.push_back(caller.busName);
    }
};

class WireTest : public LoopTest {
protected:
    PrivateBus bus;
    RecordingLog log;
    SystemClock clock;
    RecordingService service;

    std::unique_ptr<DaemonObject> startDaemon()
    {
        auto object = std::make_unique<DaemonObject>(loop, service, log);
        EXPECT_EQ(outcome(*object), "owned");
        object->serve();
        return object;
    }

    /// What the bus says to one that asked for the name.
    std::string outcome(DaemonObject& object)
    {
        std::string said;
        object.onOwned = [&] { said = "owned"; };
        object.onRefused = [&](const auto& why) { said = why; };
        EXPECT_TRUE(eventually([&] { return !said.empty(); }));
        object.onOwned = nullptr;
        object.onRefused = nullptr;
        return said;
    }

    /// Waits until all that `client` sent so far has been dealt with by a daemon that answers.
    void settle(XPCClient& client)
    {
        bool answered = false;
        client.fetchCurrentState([&](const auto&) { answered = true; });
        ASSERT_TRUE(eventually([&] { return answered; }));
    }
};

} // namespace velmora
