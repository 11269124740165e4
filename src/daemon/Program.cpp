// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Program.h"

#include "Daemon.h"
#include "base/EventLoop.h"
#include "base/JournalLog.h"
#include "base/SystemClock.h"
#include "base/WorkerThread.h"
#include "link/DaemonObject.h"
#include "power/PowerSnapshot.h"
#include "power/PowerSupplyMonitor.h"
#include "power/ThermalEvents.h"
#include "state/StateDirectory.h"

#include <csignal>
#include <cstdlib>
#include <string>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace velmora {

using namespace std::chrono_literals;

namespace {

std::filesystem::path madeStateDirectory(Log& log)
{
    auto folder = stateDirectory();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) log.error("velmorad", "Cannot make " + folder.string() + ": " + error.message() + ".");
    return folder;
}

/// For trying it out: nobody wants to wait for five minutes.
std::chrono::seconds heatPatience(Log& log)
{
    const char* text = std::getenv("VELMORA_HEAT_PATIENCE");
    if (!text || !*text) return HeatPause::usualPatience;
    const auto seconds = parseInteger(text).value_or(0);
    if (seconds >= 1 && seconds <= 3600) return std::chrono::seconds(seconds);
    log.warning("velmorad", "VELMORA_HEAT_PATIENCE is not a number of seconds from 1 to 3600; waiting five "
                            "minutes as usual.");
    return HeatPause::usualPatience;
}

/// The parts of the program in the order in which they need each other.
class Program {
public:
    Program();
    int run();

private:
    Daemon::Outbound outbound();
    void meetBus();
    void begin();
    void giveUp(const std::string& why);

    JournalLog log_{"velmorad"};
    EventLoop loop_;
    SystemClock clock_;
    Sysfs sysfs_ = Sysfs::ofEnvironment();
    PowerSupplyMonitor monitor_{loop_, sysfs_, log_};
    ThermalEvents heat_{loop_, sysfs_};
    PowerSnapshotReader reader_{sysfs_, clock_, log_};
    ChargeActuator actuator_{sysfs_, log_};
    std::filesystem::path state_ = madeStateDirectory(log_);
    SettingsStore settings_{state_ / "settings.json", clock_, log_};
    HistoryStore history_{state_ / "history.json", clock_, log_};
    WorkerThread hardware_{"velmorad-sysfs"};
    WorkerThread files_{"velmorad-state"};
    std::unique_ptr<DaemonObject> object_; ///< null where there is no bus
    Daemon daemon_;
    Subscription changes_, heatChanges_;
    bool isInCharge_ = false; ///< owns the service name: before that nothing is written anywhere
    int status_ = 0;
};

Program::Program()
    : daemon_({.loop = loop_,
               .clock = clock_,
               .log = log_,
               .hardware = hardware_,
               .reader = reader_,
               .actuator = actuator_,
               .files = files_,
               .settings = settings_,
               .history = history_,
               .ownUser = geteuid(),
               .heatPatience = heatPatience(log_)},
              outbound())
{
    loop_.stopOn({SIGTERM, SIGINT});
}

/// Nothing is told before `begin`, and from then on there is an object.
Daemon::Outbound Program::outbound()
{
    return {
        .push = [this](const auto& state) { object_->protocol().push(state); },
        .pushTo = [this](const auto& busName,
                         const auto& state) { object_->protocol().push(state, busName); },
        .chargerChanged = [this](const auto& report) { object_->charger().changed(report); },
        .batteriesChanged = [this](const auto& batteries) { object_->batteries().changed(batteries); },
        .occurred = [this](const auto& event) { object_->charger().occurred(event); },
        .delaySleep = [this](bool isWanted) { object_->delaySleep(isWanted); },
        .settingsChanged = [this](const auto& settings) { object_->charger().settingsChanged(settings); },
        .settingsChangedFor =
            [this](const auto& busName, const auto& settings) {
                object_->charger().settingsChanged(settings, busName);
            },
        .changeRefusedFor = [this](const auto& busName,
                                   Refused why) { object_->charger().changeRefused(why, busName); },
        .authorise = [this](const auto& caller,
                            auto decided) { object_->authority().ask(caller, std::move(decided)); },
        .withdrawQuestion = [this](const auto& busName) { object_->authority().forget(busName); },
    };
}

int Program::run()
{
    meetBus();
    loop_.run();
    const auto patience = isInCharge_ && daemon_.endHeatPause() ? 3s : 200ms;
    if (isInCharge_) daemon_.save();
    const bool isSaved = files_.finish(500ms);
    if (!isSaved) log_.error("velmorad", "The state could not be saved in time.");
    // A worker that waits for firmware would keep the process for as long as the firmware likes.
    if (!isSaved || !hardware_.finish(patience)) std::_Exit(status_);
    return status_;
}

void Program::meetBus()
try {
    object_ = std::make_unique<DaemonObject>(loop_, daemon_, log_);
    object_->onOwned = [this] { begin(); };
    object_->onRefused = [this](const std::string& why) { giveUp(why); };
    object_->onSleep = [this](auto done) { daemon_.goToSleep(std::move(done)); };
    object_->onResumed = [this] { daemon_.resumed(); };
    object_->onBusLost = [this] { giveUp("the system bus hung up"); };
} catch (const std::system_error& failure) {
    giveUp(failure.what());
}

void Program::begin()
{
    isInCharge_ = true;
    daemon_.meetBus(object_->busId());
    changes_ = monitor_.observe([this](SupplyNews news) { daemon_.look(news == SupplyNews::event); });
    heatChanges_ = heat_.observe([this] { daemon_.look(/*afresh=*/false); });
    daemon_.start([this] { object_->serve(); });
}

void Program::giveUp(const std::string& why)
{
    if (status_ != 0) return;
    log_.error("velmorad", "Giving up: " + why + ".");
    status_ = 1;
    loop_.stop();
}

} // namespace

int runDaemon()
{
    return Program().run();
}

} // namespace velmora
