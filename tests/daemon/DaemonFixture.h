// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "Daemon.h"

#include "ManualLoop.h"
#include "ManualQueue.h"
#include "RecordingLog.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>
#include <map>

namespace velmora {

using namespace std::chrono_literals;

inline constexpr auto startFile = "class/power_supply/BAT0/charge_control_start_threshold";
inline constexpr auto endFile = "class/power_supply/BAT0/charge_control_end_threshold";

/// A daemon over a laptop with two thresholds, on virtual time.
struct DaemonTest : testing::Test {
    DaemonTest()
    {
        supply("BAT0",
               {{"type", "Battery"}, {"energy_full", "45750000"}, {"energy_full_design", "50000000"}});
        supply("AC", {{"type", "Mains"}});
        hold(0, 100);
        battery(60, "Charging");
        hardware.inlineWork = files.inlineWork = true;
        boot();
    }

    /// The charger's files, as somebody else or the firmware left them.
    void hold(int start, int end) const
    {
        folder.write(startFile, std::to_string(start) + "\n");
        folder.write(endFile, std::to_string(end) + "\n");
    }

    void supply(const std::string& name,
                const std::vector<std::pair<const char*, std::string>>& attributes) const
    {
        for (const auto& [attribute, value] : attributes)
            folder.write("class/power_supply/" + name + '/' + attribute, value + '\n');
    }

    void battery(int level, const std::string& status, bool plugged = true)
    {
        supply("BAT0", {{"capacity", std::to_string(level)}, {"status", status}});
        supply("AC", {{"online", plugged ? "1" : "0"}});
        if (daemon) look();
    }

    void look()
    {
        daemon->look();
        settle();
    }

    void heat(int celsius) const
    {
        const std::string zone = "class/thermal/thermal_zone0/";
        folder.write(zone + "type", "cpu\n");
        folder.write(zone + "temp", std::to_string(celsius) + "000\n");
        folder.write(zone + "trip_point_0_temp", "100000\n");
        folder.write(zone + "trip_point_0_type", "critical\n");
    }

    void boot()
    {
        daemon.reset();
        settings.emplace(folder.path() / "settings.json", clock, log);
        history.emplace(folder.path() / "history.json", clock, log);
        actuator.emplace(Sysfs(folder.path()), log);
        reader.emplace(Sysfs(folder.path()), clock, log);
        daemon.emplace(
            Daemon::Ports{*loop, clock, log, hardware, *reader, *actuator, files, *settings, *history, 500},
            Daemon::Outbound{
                .push = [this](const auto& state) { pushes.push_back(state); },
                .pushTo = [this](const auto& to, const auto& state) { told.emplace_back(to, state); },
                .chargerChanged = [](const auto&) {},
                .batteriesChanged = [](const auto&) {},
                .occurred = [this](const auto& event) { note(event); },
                .delaySleep = [this](bool isWanted) { isSleepDelayed = isWanted; },
                .settingsChanged = [this](const auto& news) { announced.push_back(news); },
                .settingsChangedFor = [this](const auto& to, const auto&) { corrected.push_back(to); },
                .changeRefusedFor = [this](const auto& to, Refused why) { refused.emplace_back(to, why); },
                .authorise = [this](const auto& caller, auto decided) { authorise(caller, decided); },
                .withdrawQuestion = [this](const auto& from) { withdrawn += questions.erase(from); }});
        daemon->meetBus("bus");
        daemon->start([this] { ++ready; });
        settle();
    }

    void settle() { loop->advance(0ms); }

    void note(const ChargeEvent& event)
    {
        events += chargeEventKinds.at(static_cast<std::size_t>(event.kind));
        if (!event.powerSource.empty()) events += ' ' + event.powerSource;
        if (event.level >= 0) events += ' ' + std::to_string(event.level);
        if (event.cycleCount >= 0) events += ' ' + std::to_string(event.cycleCount);
        events += ". ";
    }
    /// What has been told since this was last asked.
    std::string happened() { return std::exchange(events, {}); }

    /// A polkit that says no at once, or thinks until `answer`.
    void authorise(const Caller& caller, const std::function<void(std::optional<Refused>)>& decided)
    {
        asked += caller.busName + (caller.mayInteract ? "! " : " ");
        if (!isThinking) return decided(Refused::denied);
        if (const auto older = std::exchange(questions[caller.busName], decided)) older(Refused::superseded);
    }
    void answer(const std::string& caller, std::optional<Refused> why = std::nullopt)
    {
        const auto question = questions.extract(caller);
        ASSERT_TRUE(question) << caller;
        question.mapped()(why);
        settle();
    }

    void send(const std::string& caller, const ChargingSettings& message, uid_t user = 0,
              bool mayInteract = false)
    {
        daemon->updateSettings({caller, user, mayInteract}, message);
        settle();
    }
    /// By a person who may be asked for a password.
    void click(const ChargingSettings& message, const std::string& caller = ":1.1")
    {
        send(caller, message, 1000, true);
    }

    std::optional<bool> toggle(uid_t user = 0, ChargingCommand command = ChargingCommand::toggle)
    {
        std::optional<bool> allowed;
        daemon->controlCharging({":1.9", user}, command, [&](const auto& outcome) {
            if (const auto* isAllowed = std::get_if<bool>(&outcome)) allowed = *isAllowed;
        });
        settle();
        return allowed;
    }

    /// Whether a quick charge is under way then; nothing after a refusal.
    std::optional<bool> beginTravelCharge(uid_t user = 0)
    {
        std::optional<bool> isBegun;
        daemon->beginTravelCharge({":1.7", user}, [&](const auto& outcome) {
            if (const auto* answer = std::get_if<bool>(&outcome)) isBegun = *answer;
        });
        settle();
        return isBegun;
    }

    /// All settings as they are by default, by somebody who knows what they were.
    void takeBack()
    {
        daemon->settings({":1.6", 0});
        send(":1.6", {});
    }

    /// Changes those in which `values` differs from the defaults; the reason of a refusal, empty for none.
    std::string change(const ChargingSettings& values, uid_t user = 0, const std::string& caller = ":1.8")
    {
        std::string reason;
        const SettingsChange wish{values, differing({}, values)};
        daemon->changeSettings({caller, user}, wish, [&](const auto& outcome) {
            if (const auto* refusal = std::get_if<Refusal>(&outcome)) reason = refusal->reason;
        });
        settle();
        return reason;
    }

    int start() const { return std::stoi(folder.read(startFile)); }
    int end() const { return std::stoi(folder.read(endFile)); }

    TemporaryFolder folder;
    std::shared_ptr<ManualLoop> loop = std::make_shared<ManualLoop>();
    ManualClock clock{loop};
    RecordingLog log;
    ManualQueue hardware;
    ManualQueue files;
    std::optional<SettingsStore> settings;
    std::optional<HistoryStore> history;
    std::optional<ChargeActuator> actuator;
    std::optional<PowerSnapshotReader> reader;
    std::vector<HSBatteryState> pushes;
    bool isSleepDelayed = false;
    std::string events; ///< "charging paused. level lost 19. "
    std::vector<std::pair<std::string, HSBatteryState>> told;
    std::vector<KeyedArchive> announced; ///< settings, to all
    std::vector<std::string> corrected;  ///< who alone was told settings
    std::vector<std::pair<std::string, Refused>> refused;
    bool isThinking = false;
    std::string asked; ///< about whom polkit was, "!" where a person may be asked for a password
    std::map<std::string, std::function<void(std::optional<Refused>)>> questions; ///< pending ones
    std::size_t withdrawn = 0;
    int ready = 0;
    std::optional<Daemon> daemon; // last: the others outlive it
};

} // namespace velmora
