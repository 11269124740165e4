// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "App.h"

#include "battery/BatteryHardwareService.h"
#include "desktop/LoginSession.h"
#include "platform/Platform.h"

namespace velmora {

App::App(LinuxPlatform& platform)
    : client_(std::make_shared<XPCClient>(platform.loop(), platform.clock(), platform.log())),
      model_(client_, std::make_shared<BatteryHardwareService>()),
      notices_([this] { return noticeWishes(); }, isOwnSessionActive),
      calendarConsent_(CalendarContextManager::shared()),
      travelCharge_(CalendarContextManager::shared(), travelHands())
{
    // A daemon that starts pushes its state by itself, but not its history.
    client_->onDaemonAppeared = [this] {
        model_.fetchHistory();
        model_.fleet().daemonAppeared();
    };
    client_->onDaemonPresence = [this] {
        if (client_->isDaemonMissing()) model_.daemonGone();
        travelCharge_.chargerChanged();
        if (onChargerChange) onChargerChange();
        if (onDaemonPresence) onDaemonPresence();
    };
    client_->onChargerChange = [this] {
        travelCharge_.chargerChanged();
        if (onChargerChange) onChargerChange();
    };
    client_->onRefusal = [this] {
        if (onChargerChange) onChargerChange();
    };
    client_->onSettingsChange = [this] {
        if (const auto held = client_->settings()) model_.followSettings(*held, client_->toldLast());
        if (const auto& told = client_->told()) model_.fleet().settingsTold(*told);
        hasSettings_ = true;
        takeLevel();
    };
    client_->onEvent = [this](const auto& event) { takeEvent(event); };
    wireFleet();
    rememberLowBatteryNotice();
    // The daemon looks at the zones while they are hot: each of its pushes is an occasion.
    heat_ = model_.thermalState.observe([&platform](auto) { platform.lookAtHeat(); });
    levels_ = model_.percentage.observe([this](double) { takeLevel(); });
    modelChanges_ = model_.willChange.observe([this] { travelCharge_.chargerChanged(); });
}

void App::wireFleet()
{
    model_.fleet().acceptCommands(ecosystemSync_.acceptsCommands.get());
    commandsSwitch_ = ecosystemSync_.acceptsCommands.observe(
        [this](bool isAccepting) { model_.fleet().acceptCommands(isAccepting); });
    ecosystemSync_.onBegun = [this] { model_.syncFleetNow(); };
}

TravelCharge::Hands App::travelHands()
{
    return {.look = [this] { return travelCharger(); },
            .begin = [this](const auto& completion) { client_->beginTravelCharge(completion); },
            .takeBack =
                [this] {
                    if (!model_.isTemporaryOverrideEnabled.get()) return;
                    asPerson([this] { model_.toggleTemporaryOverride(); });
                }};
}

/// Nothing where there is no charger that would have held back.
std::optional<TravelCharge::Charger> App::travelCharger() const
{
    const auto& state = client_->state();
    const auto& settings = client_->settings();
    const auto& report = client_->charger();
    if (!state || !settings || !report) return std::nullopt;
    if (!report->hasBattery || report->control == ChargerReport::Control::none) return std::nullopt;
    using Pause = TravelCharge::Pause;
    const auto pause = report->mode == ChargerReport::Mode::paused          ? Pause::person
                       : report->mode == ChargerReport::Mode::pausedForHeat ? Pause::heat
                                                                            : Pause::none;
    return TravelCharge::Charger{.isOnMains = state->powerSource != "Battery",
                                 .percentage = state->percentage,
                                 .isQuickChargeOn = settings->isTemporaryOverride,
                                 .pause = pause};
}

/// Until the daemon has sent this user's notice switches, events are dropped: the user may want none.
void App::takeEvent(const ChargeEvent& event)
{
    if (hasSettings_) notices_.take(event);
}

/// The battery's, whatever else the model may show.
void App::takeLevel()
{
    if (const auto& state = client_->state(); state && hasSettings_) notices_.takeLevel(state->percentage);
}

NoticeWishes App::noticeWishes() const
{
    return {.onLimit = model_.notifyOnLimit.get(),
            .onHeat = model_.notifyOnHeat.get(),
            .onCycle = model_.notifyOnCycle.get(),
            .onPowerChange = model_.notifyOnPowerChange.get(),
            .onLowBattery = model_.notifyOnLowBattery.get(),
            .lowBatteryLimit = model_.lowBatteryLimit.get()};
}

/// The one notice that the daemon never learns of. What is kept is that it is off, since it is on where
/// nothing was ever kept.
void App::rememberLowBatteryNotice()
{
    const auto preferences = Platform::current().preferences;
    if (preferences->boolean(preference_key::isLowBatteryNoticeOff)) model_.notifyOnLowBattery.set(false);
    lowBatteryNotice_ = model_.notifyOnLowBattery.observe([preferences](bool isOn) {
        if (preferences->boolean(preference_key::isLowBatteryNoticeOff) == isOn)
            preferences->set(preference_key::isLowBatteryNoticeOff, !isOn);
    });
}

} // namespace velmora
