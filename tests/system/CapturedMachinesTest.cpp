// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SystemTest.h"

#include "history/HistoryCodec.h"
#include "thermal/ThermalMonitorService.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace velmora {
namespace {

std::vector<std::string> machineNames()
{
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(VELMORA_MACHINES)) {
        if (file.path().extension() == ".sysfs") names.push_back(file.path().stem());
    }
    std::ranges::sort(names);
    return names;
}

/// Every laptop that was ever captured, its files laid out plainly.
struct CapturedMachinesTest : SystemTest, testing::WithParamInterface<std::string> {
    void expectSaneState()
    {
        const auto now = peer.state();
        ASSERT_TRUE(now);
        EXPECT_TRUE(now->percentage >= 0 && now->percentage <= 100) << now->percentage;
        EXPECT_TRUE(now->powerSource == "AC" || now->powerSource == "Battery") << now->powerSource;
        EXPECT_TRUE(ThermalMonitorService::thermalStateFromRawValue(now->thermalState)) << now->thermalState;
        for (const auto minutes : {now->timeToFull, now->timeToEmpty})
            EXPECT_TRUE(minutes >= -1 && minutes < 60 * 24 * 7) << minutes;
    }

    /// The files under which drivers offer thresholds, with what they hold by default or by their owner's
    /// wish.
    void expectHeld(const CapturedMachine& machine)
    {
        for (const auto& [path, text] : machine.values) {
            const auto file = std::filesystem::path(path);
            const std::string name = file.filename();
            if (name == "conservation_mode" || text.find("Long_Life") != text.npos) expectOwnLimit(file);
            if (!name.starts_with("charge_") || !name.ends_with("_threshold")) continue;
            const bool isStart = name.find("start") != name.npos;
            const int held = wantedEnd(machine, file.parent_path()) - (isStart ? 2 : 0);
            EXPECT_TRUE(eventually([&] {
                return folder.read(tree() / file).starts_with(std::to_string(held));
            })) << path
                << " holds " << folder.read(tree() / file) << " instead of " << held;
        }
    }

    /// Plain files show what was written.
    void expectOwnLimit(const std::filesystem::path& file)
    {
        const auto* const on = file.filename() == "conservation_mode" ? "1" : "Long_Life";
        EXPECT_TRUE(eventually([&] { return folder.read(tree() / file).starts_with(on); })) << file;
    }

    static int wantedEnd(const CapturedMachine& machine, const std::filesystem::path& supply)
    {
        for (const auto* name : {"charge_control_end_threshold", "charge_stop_threshold"}) {
            const auto found = machine.values.find(supply / name);
            if (found != machine.values.end() && found->second != "100") return std::stoi(found->second);
        }
        return 80;
    }
};

TEST_P(CapturedMachinesTest, IsServedAndLeftWell)
{
    const auto machine = captured(GetParam());
    machine.layInto(tree());
    startDaemon();
    expectSaneState();
    expectHeld(machine);
    const auto history = peer.history();
    ASSERT_TRUE(history);
    stopDaemon();

    const auto settings = nlohmann::json::parse(folder.read(state() / "settings.json"), nullptr, false);
    EXPECT_EQ(settings.value("version", 0), 2);
    EXPECT_EQ(decodeHistory(folder.read(state() / "history.json")).value_or(std::vector<HSHistorySnapshot>{}),
              *history);
}

INSTANTIATE_TEST_SUITE_P(Machines, CapturedMachinesTest, testing::ValuesIn(machineNames()),
                         [](const auto& machine) {
                             std::string name = machine.param;
                             std::ranges::replace(name, '-', '_');
                             return name;
                         });

} // namespace
} // namespace velmora
