// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Daemon.h"

#include "BatteryReports.h"
#include "thermal/ThermalMonitorService.h"

#include <algorithm>
#include <utility>

namespace velmora {

using namespace std::chrono_literals;

namespace {

constexpr auto category = "Daemon";

/// Vendor drivers bring the thresholds some time after the battery and announce nothing: that long after the
/// start a battery without any is looked at now and then.
constexpr auto controlPatience = 10min;
/// By then the charger has followed what was written, and has been looked at.
constexpr auto effectTime = 2s;
/// Clients that wait to hear what the charger made of their wish.
constexpr std::size_t maximumWaiting = 32;

std::optional<std::chrono::milliseconds> earliest(std::optional<std::chrono::milliseconds> one,
                                                  std::optional<std::chrono::milliseconds> other)
{
    return one && other ? std::min(one, other) : one ? one : other;
}

} // namespace

Daemon::Daemon(const Ports& ports, Outbound outbound)
    : ports_(ports),
      outbound_(std::move(outbound)),
      changes_(ports.loop, ports.log, ports.clock, category, LogBudget::manyAtOnce),
      state_({ports.loop, ports.files, ports.settings, [this] { return remembered(); }}),
      past_({ports.clock, ports.files, ports.history}),
      quickCharge_(state_.saved().quickCharge, state_.saved().quickChargeCause),
      intake_(intakePorts(), quickCharge_, state_.saved().settings, state_.saved().users),
      manual_(manualPorts(), state_.saved().manual),
      heat_(heatPorts(), state_.saved().isPausedForHeat, ports.heatPatience),
      adoption_(adoptionPorts(), state_.saved().hasAdoptedLimit, state_.saved().firstHeld),
      events_(state_.saved().told),
      schedule_({ports.loop, ports.clock, ports.hardware, ports.reader, ports.actuator},
                [this](const Look& look) { seen(look); }),
      keeper_(
          {ports.loop, ports.clock, ports.log, ports.hardware, ports.actuator},
          [this](bool changed) { acted(changed); }, state_.saved().heldLevel),
      pacer_(ports.loop, ports.clock, [this](const HSBatteryState& state) { outbound_.push(state); })
{
}

void Daemon::meetBus(const std::string& busId)
{
    busId_ = busId;
    if (state_.saved().busId == busId_)
        intake_.restore(state_.saved().callers);
    else
        events_.forgetBoot();
}

void Daemon::start(std::function<void()> ready)
{
    started_ = ports_.clock.sinceBoot();
    ready_ = std::move(ready);
    readyTimer_ = ports_.loop.after(2s, lifetime_.guard([this] {
        ports_.log.warning(category, "The firmware has not answered for two seconds; going on without it.");
        isNowReady();
    }));
    look();
}

void Daemon::isNowReady()
{
    readyTimer_.reset();
    if (const auto ready = std::exchange(ready_, nullptr)) ready();
}

void Daemon::resumed()
{
    heat_.wake();
    keeper_.forgetHistory();
    look();
    schedule_.lookAgainSoon();
}

void Daemon::seen(const Look& look)
{
    const bool hadExternalPower = reading_.hasExternalPower;
    keeper_.observe(look.chargers);
    readBattery(look);
    noticePlug(hadExternalPower);
    adoption_.observe();
    if (battery_ && !isUnreadable_ && keeper_.learn(reading_)) save();
    observeQuickCharge();
    observeHeat();
    isNowReady(); // before the first push: clients that wait for the first look then get their answers
    if (!hold()) {
        endHeat();
        tell();
    }
    tellEvents();
    planNextLook();
    // What is for the disk can wait for what is for people; one that was full may have room again.
    if (state_.hasFailed() || past_.hasFailed()) save();
    if (battery_ && !isUnreadable_) past_.record(*battery_, thermalLevel_);
}

void Daemon::readBattery(const Look& look)
{
    const auto& snapshot = look.snapshot;
    thermalLevel_ = snapshot.thermalLevel;
    isUnreadable_ = !snapshot.battery && !look.chargers.empty();
    if (isUnreadable_)
        return; // firmware has such moments; what was last seen is nearer to the truth than nothing
    batteries_ = batteryReports(snapshot.supplies.batteries);
    battery_ = snapshot.battery;
    reading_ = ChargeReading::of(snapshot);
    minutes_ = battery_ ? estimator_.update(*battery_, snapshot.time) : TimeEstimator::Minutes{};
}

void Daemon::noticePlug(bool hadExternalPower)
{
    if (hadExternalPower || !reading_.hasExternalPower) return;
    keeper_.forgetHistory();
    if (manual_.isAsSet()) return;
    manual_.end();
    save();
}

void Daemon::observeQuickCharge()
{
    if (!battery_ || isUnreadable_) return;
    if (const auto ended = quickCharge_.observe(reading_, ports_.clock.sinceBoot(), isPaused())) {
        ports_.log.info(category, "Quick charge ends: " + std::string(ended->why) + ".");
        isOverrideFulfilled_ = ended->isFulfilled;
        intake_.announce();
        save();
    }
}

void Daemon::observeHeat()
{
    heat_.observe({.reading = reading_,
                   .temperature = battery_ && !isUnreadable_ ? battery_->temperature : std::nullopt,
                   .isAvoidable = !quickCharge_.isForPerson(),
                   .control = keeper_.control()},
                  ports_.clock.sinceBoot());
}

bool Daemon::hold()
{
    const bool isTooEarly = !adoption_.isSettled() && keeper_.control() != ChargeControl::none;
    if (isTooEarly) return false; // what it holds may be its owner's wish
    const auto decision = decide(quickCharge_.isForPerson() ? std::nullopt : heat_.pausedAt());
    mode_ = decision.mode;
    return keeper_.hold(decision);
}

ChargeDecision Daemon::decide(std::optional<int> heatPausedAt) const
{
    return decideCharging(intake_.machine(), quickCharge_.isActive(), manual_.state(), keeper_.control(),
                          heatPausedAt);
}

/// The charger has been told what there was to tell.
void Daemon::endHeat()
{
    if (mode_ == ChargeMode::heat || !heat_.isNoted()) return;
    heat_.lifted(keeper_.holdsWanted());
    save();
}

bool Daemon::endHeatPause()
{
    const auto ordinary = decide(std::nullopt).thresholds;
    if (!heat_.isNoted() || !ordinary) return false;
    keeper_.leaveAt(*ordinary);
    return true;
}

/// What is decided may have changed, and somebody waits to hear that the charger has followed.
void Daemon::holdAnew()
{
    if (!hold()) acted(false);
}

void Daemon::acted(bool changed)
{
    if (manual_.isPausing() && isChargingAllowed()) {
        changes_.info(keeper_.control() == ChargeControl::none
                          ? "Charging cannot be paused: this charger takes no limit."
                          : "This charger cannot be paused at " + std::to_string(manual_.state().pausedAt) +
                                "%.");
        manual_.end();
        if (hold()) return;
    }
    if (mode_ == ChargeMode::heat && heat_.isFirstAttempt() && isChargingAllowed()) {
        changes_.info("This charger cannot be paused at " + std::to_string(heat_.pausedAt().value_or(0)) +
                      "%: it goes on although the battery is hot.");
        const auto held = keeper_.inForce();
        heat_.giveUp(held ? std::optional(held->end) : std::nullopt);
        if (hold()) return;
    }
    endHeat();
    manual_.answer();
    tell();
    save();
    if (changed) schedule_.lookAgainSoon();
}

bool Daemon::isChargingAllowed() const
{
    return velmora::isChargingAllowed(keeper_.inForce(), reading_);
}

/// By a person, or because the battery is hot.
bool Daemon::isPaused() const
{
    return manual_.isPaused() || mode_ == ChargeMode::heat;
}

void Daemon::tell()
{
    tellState();
    outbound_.chargerChanged(charger());
    outbound_.batteriesChanged(batteries_);
}

void Daemon::tellState()
{
    const bool isKnown = battery_ || !isUnreadable_; // nobody is told of 0 % because firmware has a moment
    if (isKnown) pacer_.offer(batteryState());
}

void Daemon::tellEvents()
{
    if (!battery_ || isUnreadable_) return;
    const auto events = events_.observe({.reading = reading_,
                                         .mode = mode_,
                                         .inForce = keeper_.inForce(),
                                         .isFixed = keeper_.control() == ChargeControl::fixedLimit,
                                         .isFollowed = keeper_.holdsWanted(),
                                         .cycleCount = battery_->cycleCount,
                                         .isOverrideFulfilled = std::exchange(isOverrideFulfilled_, false),
                                         .isCool = heat_.isCool()},
                                        ports_.clock.sinceBoot());
    for (const auto& event : events) outbound_.occurred(event);
    // The level is saved with the next thing that is: a disk need not follow each point.
    const bool isLevelAlone = std::ranges::all_of(
        events, [](const auto& event) { return event.kind == ChargeEvent::Kind::levelLost; });
    if (!isLevelAlone) save();
}

/// In the first minutes, while vendor drivers are still being loaded.
bool Daemon::seeksControl() const
{
    return keeper_.control() == ChargeControl::none && ports_.clock.sinceBoot() - started_ < controlPatience;
}

bool Daemon::isWorthWatching() const
{
    return reading_.isCharging || !reading_.hasExternalPower || quickCharge_.isActive() ||
           !manual_.isAsSet() || mode_ == ChargeMode::heat || isUnreadable_;
}

void Daemon::planNextLook()
{
    Pace pace = thermalLevel_ > 0 ? Pace::warm : Pace::resting;
    if (seeksControl() || isWorthWatching()) pace = Pace::moving;
    if (keeper_.chargers().empty()) pace = Pace::none; // a battery that comes announces itself
    // Nothing that is due comes about while the battery cannot be read: once its time is past, each look
    // would ask for the next at once.
    const bool isReadable = battery_ && !isUnreadable_;
    schedule_.plan(pace, isReadable ? earliest(quickCharge_.due(), events_.due()) : std::nullopt);
}

HSBatteryState Daemon::batteryState()
{
    return batteryState(intake_.machine());
}

HSBatteryState Daemon::batteryState(const ChargingSettings& settings) const
{
    const auto thermal =
        std::string(ThermalMonitorService::rawValue(ThermalMonitorService::thermalState(thermalLevel_)));
    return {reading_.percentage,
            reading_.isCharging,
            reading_.hasExternalPower ? "AC" : "Battery",
            thermal,
            settings.customChargeLimit,
            settings.customHysteresis,
            minutes_.toFull,
            minutes_.toEmpty,
            settings.isStorageModeEnabled};
}

const std::vector<HSHistorySnapshot>& Daemon::analyticsHistory()
{
    return past_.samples();
}

ChargerReport Daemon::charger()
{
    ChargerReport report;
    report.hasBattery = battery_.has_value();
    keeper_.describe(report);
    report.isChargingAllowed = isChargingAllowed();
    report.canPauseForHeat = heat_.isPossible();
    report.health = battery_ ? battery_->health.value_or(-1) : -1;
    report.cycleCount = battery_ ? battery_->cycleCount.value_or(-1) : -1;
    return report;
}

void Daemon::callerLeft(const std::string& busName)
{
    intake_.forget(busName);
}

SettingsIntake::Ports Daemon::intakePorts()
{
    return {
        .loop = ports_.loop,
        .log = ports_.log,
        .clock = ports_.clock,
        .authorise = [this](const Caller& caller, auto decided) { authorise(caller, std::move(decided)); },
        .withdraw = [this](const std::string& busName) { outbound_.withdrawQuestion(busName); },
        .isPaused = [this] { return isPaused(); },
        .changed = [this](const auto& caller, const auto& before) { settingsChanged(caller, before); },
        .refused =
            [this](const Caller& caller, Refused why) {
                outbound_.pushTo(caller.busName, batteryState());
                outbound_.changeRefusedFor(caller.busName, why);
            },
        .save = [this] { state_.saveSoon(); },
        .announce = [this](const auto& settings) { outbound_.settingsChanged(settings); },
        .announceTo = [this](const auto& to,
                             const auto& settings) { outbound_.settingsChangedFor(to, settings); }};
}

LimitAdoption::Ports Daemon::adoptionPorts()
{
    return {.log = ports_.log,
            .keeper = keeper_,
            .adopt = [this](double percent) { intake_.adoptLimit(percent); },
            .lookAgain = [this] { schedule_.lookAgainSoon(); },
            .save = [this](const auto& done) { state_.saveNow([done](bool) { done(); }); },
            .settled = [this] { holdAnew(); }};
}

HeatGuard::Ports Daemon::heatPorts()
{
    return {.log = ports_.log,
            .save = [this](const auto& done) { state_.saveNow(done); },
            .delaySleep = [this](bool isWanted) { outbound_.delaySleep(isWanted); },
            .changed = [this] { holdAnew(); }};
}

ManualControl::Ports Daemon::manualPorts()
{
    return {.reading = reading_,
            .isChargingAllowed = [this] { return isChargingAllowed(); },
            .authorise = [this](const auto& caller, const auto& what,
                                const auto& decided) { intake_.authorise(caller, what, decided); },
            .logChange = [this](const auto& caller, const auto& what) { intake_.logChange(caller, what); },
            .changed = [this] { holdAnew(); }};
}

/// The daemon's own user could as well replace the daemon.
void Daemon::authorise(const Caller& caller, std::function<void(std::optional<Refused>)> decided)
{
    if (caller.uid == 0 || caller.uid == ports_.ownUser) return decided(std::nullopt);
    outbound_.authorise(caller, std::move(decided));
}

void Daemon::settingsChanged(const Caller& caller, const ChargingSettings& before)
{
    manual_.end();
    adoption_.settle();
    // A push with the settings before may be on its way: its receiver would take them for news and send them
    // back half a second later, while the next regular push may be two seconds off.
    if (batteryState() != batteryState(before))
        outbound_.pushTo(caller.busName, batteryState());
    else
        tellOnceItShows(caller.busName);
    tellState(); // or the push that is due while the charger is written to would still carry them
    save();
    planNextLook();
    if (!hold()) tell();
}

/// A client shows what it asked for at once. What it hears before the charger has followed would only
/// flicker, and where the charger does not follow at all no push would say so.
void Daemon::tellOnceItShows(const std::string& busName)
{
    if (unshown_.size() < maximumWaiting && std::ranges::count(unshown_, busName) == 0)
        unshown_.push_back(busName);
    effect_ = ports_.loop.after(effectTime, lifetime_.guard([this] {
        for (const auto& one : std::exchange(unshown_, {})) outbound_.pushTo(one, batteryState());
    }));
}

DaemonState Daemon::remembered() const
{
    return {.settings = intake_.machine(),
            .users = intake_.users().entries(),
            .quickCharge = quickCharge_.state(),
            .quickChargeCause = quickCharge_.cause(),
            .hasAdoptedLimit = adoption_.isDone(),
            .manual = manual_.state(),
            .firstHeld = adoption_.firstHeld(),
            .heldLevel = keeper_.heldLevel(),
            .told = events_.memory(),
            .isPausedForHeat = heat_.isNoted(),
            .busId = busId_,
            .callers = intake_.messages()};
}

void Daemon::save()
{
    if (past_.hasFailed()) past_.save();
    state_.save();
}

} // namespace velmora
