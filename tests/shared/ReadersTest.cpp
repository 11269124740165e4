// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FakePlatform.h"
#include "battery/BatteryHardwareService.h"
#include "thermal/ThermalMonitorService.h"

#include <gtest/gtest.h>

namespace velmora {

namespace {

using namespace std::string_literals;
using ThermalState = ThermalMonitorService::ThermalState;

PowerSourceDescription battery(PowerSourceDescription rest = {})
{
    rest["Type"] = "InternalBattery"s;
    return rest;
}

TEST(BatteryHardwareService, ReadsADescription)
{
    constexpr std::int64_t max = std::numeric_limits<std::int64_t>::max();
    const PowerSourceDescription allThere{{"Current Capacity", std::int64_t{40}},
                                          {"Max Capacity", std::int64_t{50}},
                                          {"Is Charging", true},
                                          {"Power Source State", "AC Power"s},
                                          {"Time to Full Charge", std::int64_t{45}},
                                          {"Time to Empty", std::int64_t{0}}};
    const PowerSourceDescription mistyped{{"Current Capacity", "80"s},      {"Max Capacity", true},
                                          {"Is Charging", std::int64_t{1}}, {"Power Source State", true},
                                          {"Time to Full Charge", 45.0},    {"Time to Empty", "45"s}};
    const std::tuple<const char*, PowerSourceDescription, SharedBatteryState> cases[] = {
        {"all there, as integers", allThere, {80, true, "AC", 45, 0}},
        {"nothing there", {}, {0, false, "Battery", -1, -1}},
        {"all of another type", mistyped, {0, false, "Battery", -1, -1}},
        {"no maximum", {{"Current Capacity", 33.25}}, {33.25, false, "Battery", -1, -1}},
        {"another power word", {{"Power Source State", "ac power"s}}, {0, false, "Battery", -1, -1}},
        {"more than full", {{"Current Capacity", 652.0}}, {652, false, "Battery", -1, -1}},
        {"of nothing", {{"Current Capacity", max}, {"Max Capacity", 0.0}}, {0, false, "Battery", -1, -1}},
    };
    for (const auto& [what, description, expected] : cases) {
        EXPECT_EQ(BatteryHardwareService::stateFromDescriptions({battery(description)}), expected) << what;
    }
}

TEST(BatteryHardwareService, DeliversAtTheStartOnChangesAndWhenAsked)
{
    FakePlatform platform;
    std::vector<double> first;
    std::vector<double> second;
    {
        BatteryHardwareService service;
        service.update();
        platform.powerSources->announce();
        EXPECT_EQ(platform.powerSources->readings, 0) << "read for nobody";
        service.startMonitoring([&](const auto& state) { first.push_back(state.percentage); });
        platform.powerSources->become({battery({{"Current Capacity", 60.0}})});
        service.update();
        service.startMonitoring([&](const auto& state) { second.push_back(state.percentage); });
        platform.powerSources->become({});
        platform.powerSources->become({battery({{"Current Capacity", 61.0}})});
    }
    platform.powerSources->announce();
    EXPECT_EQ(first, (std::vector<double>{60, 60})); // none at its start: there was no battery
    EXPECT_EQ(second, (std::vector<double>{60, 61}));
}

TEST(BatteryHardwareService, ComplainsOnceUntilTheCauseIsGone)
{
    FakePlatform platform;
    BatteryHardwareService service;
    service.startMonitoring([](const auto&) {});
    const auto broken = battery({{"Max Capacity", 0.0}});
    platform.powerSources->become({broken});
    platform.powerSources->become({broken});
    EXPECT_EQ(platform.log->count(), 1U);
    platform.powerSources->become({battery()});
    platform.powerSources->become({broken});
    EXPECT_EQ(platform.log->count(), 2U);
}

TEST(ThermalMonitorService, TakesWhatItDoesNotKnowForNominal)
{
    for (const int level : {-1, 4, 1000})
        EXPECT_EQ(ThermalMonitorService::thermalState(level), ThermalState::nominal);
    for (const auto* text : {"critical", "Nominal ", ""})
        EXPECT_FALSE(ThermalMonitorService::thermalStateFromRawValue(text)) << text;
}

TEST(ThermalMonitorService, DeliversEverySignalToItsOneSubscriber)
{
    FakePlatform platform;
    std::vector<ThermalState> first;
    std::vector<ThermalState> second;
    auto service = std::make_unique<ThermalMonitorService>();
    service->update();
    service->startMonitoring([&](auto state) { first.push_back(state); });
    platform.thermalLevel->become(2);
    platform.thermalLevel->announce();
    service->startMonitoring([&](auto state) {
        second.push_back(state);
        if (state == ThermalState::critical) service.reset();
    });
    platform.thermalLevel->become(3);
    platform.thermalLevel->become(1);
    using enum ThermalMonitorService::ThermalState;
    EXPECT_EQ(first, (std::vector{nominal, serious, serious}));
    EXPECT_EQ(second, (std::vector{serious, critical}));
}

} // namespace

} // namespace velmora
