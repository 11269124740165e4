// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ThresholdsReturn.h"

#include "base/JournalLog.h"
#include "base/SystemClock.h"
#include "base/Translation.h"
#include "state/StateDirectory.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace velmora {

using namespace std::chrono_literals;

namespace {

/// Some controllers take a moment to show what was written.
constexpr auto settleTime = 300ms;

/// As a charger does that nobody limits.
Thresholds unlimited(ChargeControl control)
{
    return *decideCharging({.isAppleRecommendedMode = false}, false, {}, control).thresholds;
}

Thresholds wantedOf(const BatteryCharger& charger, const FirstHeld::Entries& firstHeld)
{
    Thresholds wanted = unlimited(charger.control);
    const auto found = firstHeld.find(charger.name);
    if (found == firstHeld.end() || !found->second) return wanted;
    wanted.end = found->second->end;
    if (found->second->start && wanted.start) wanted.start = found->second->start;
    return wanted;
}

BatteryCharger written(ChargeActuator& actuator, const std::string& name, const Thresholds& wanted)
{
    auto outcome = actuator.apply({name}, wanted, /*afresh=*/true);
    if (outcome.isSettling) {
        std::this_thread::sleep_for(settleTime);
        outcome = actuator.settle();
    }
    return outcome.chargers.front();
}

std::string sentence(const BatteryCharger& charger, const Thresholds& wanted, bool isDone)
{
    const int end = charger.fitted(wanted).end;
    const auto& name = charger.name;
    if (charger.control == ChargeControl::fixedLimit) {
        if (!isDone) return tr("%1: the firmware's own limit could not be set back.", name);
        return end < 100 ? tr("%1: the firmware's own limit is on again.", name)
                         : tr("%1: the firmware's own limit is off again.", name);
    }
    const auto level = std::to_string(end) + '%';
    return isDone ? tr("%1: charging stops at %2 again.", name, level)
                  : tr("%1: could not be set back to %2.", name, level);
}

/// Prints warnings and errors: `--restore-thresholds` is run by hand or by a package that is being removed.
class PrintedLog final : public Log {
public:
    void write(LogLevel level, std::string_view, std::string_view text) override
    {
        if (level < LogLevel::warning) return;
        std::fprintf(stderr, "velmorad: %s\n", escapedLine(text).c_str());
    }
};

} // namespace

ThresholdsReturn giveThresholdsBack(const Sysfs& sysfs, const FirstHeld::Entries& firstHeld, Log& log)
{
    ChargeActuator actuator(sysfs, log);
    ThresholdsReturn result;
    for (const auto& charger : actuator.inspect(PowerSupplyReader(sysfs, log).read(true).batteries)) {
        if (charger.control == ChargeControl::none) continue;
        const auto wanted = wantedOf(charger, firstHeld);
        const bool isDone = written(actuator, charger.name, wanted).holds(wanted);
        (isDone ? result.done : result.failed).push_back(sentence(charger, wanted, isDone));
    }
    return result;
}

bool liftHeatPause(const Sysfs& sysfs, SettingsStore& settings, Log& log)
{
    auto state = settings.peek();
    if (!state.isPausedForHeat) return true;
    ChargeActuator actuator(sysfs, log);
    const bool isQuickCharging = state.quickCharge == QuickCharge::State::active;
    bool isDone = true;
    for (const auto& charger : actuator.inspect(PowerSupplyReader(sysfs, log).read(true).batteries)) {
        const auto ordinary = decideCharging(state.settings, isQuickCharging, state.manual, charger.control);
        const auto& wanted = ordinary.thresholds;
        if (wanted && !written(actuator, charger.name, *wanted).holds(*wanted)) isDone = false;
    }
    if (!isDone) {
        log.error("velmorad", "A charger could not be told that the pause for heat is over.");
        return false;
    }
    state.isPausedForHeat = false;
    return settings.save(state);
}

int liftHeatPause()
{
    PrintedLog log;
    const SystemClock clock;
    SettingsStore settings(stateDirectory() / "settings.json", clock, log);
    return liftHeatPause(Sysfs::ofEnvironment(), settings, log) ? 0 : 1;
}

int restoreThresholds()
{
    PrintedLog log;
    const SystemClock clock;
    const auto state = SettingsStore(stateDirectory() / "settings.json", clock, log).load();
    const auto result = giveThresholdsBack(Sysfs::ofEnvironment(), state.firstHeld, log);
    for (const auto& line : result.done) std::printf("%s\n", line.c_str());
    for (const auto& line : result.failed) std::fprintf(stderr, "velmorad: %s\n", line.c_str());
    return result.failed.empty() ? 0 : 1;
}

} // namespace velmora
