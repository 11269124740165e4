// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "bus/DBus.h"
#include "bus/NameOwner.h"
#include "link/RecordFollower.h"
#include "platform/Clock.h"
#include "platform/Complaints.h"
#include "wire/ChargerInterface.h"

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>

namespace velmora {

/// The application's end of the wire: app.velmora.daemon on the system bus.
///
/// Sends no settings before it knows those that the daemon holds: what a client has just begun with is
/// nobody's wish, and would end what another one asked for.
///
/// Never blocks and never fails loudly. Without a bus or a daemon a call is lost; its completion is dropped.
/// A daemon that comes back is reached again, no call starts one. What the daemon says is not trusted further
/// than its types go: records take defaults, an answer that is no record is none, with a log line a cause.
///
/// Main thread only; completions and handlers are called there, and may destroy the client.
class XPCClient final : public DaemonClientProtocol {
public:
    /// `loop`, `clock` and `log` must outlive the client.
    XPCClient(EventLoop& loop, const Clock& clock, Log& log);
    ~XPCClient() override;
    XPCClient(const XPCClient&) = delete;
    XPCClient& operator=(const XPCClient&) = delete;

    /// Called when the daemon's name gains an owner: one that was not there when the client began, or a new
    /// one. What was asked of the one before may not have been answered.
    std::function<void()> onDaemonAppeared;
    /// Called when `isDaemonMissing` may have changed.
    std::function<void()> onDaemonPresence;

    /// Nobody owns the daemon's name, or there is no bus. False while that is not known yet.
    bool isDaemonMissing() const { return isDaemonMissing_; }

    /// What the daemon last told of the charger; nothing where there is none, or it has not told yet.
    const std::optional<ChargerReport>& charger() const { return charger_; }
    /// Called when the report has changed. Not called when the daemon goes: `onDaemonPresence` is.
    std::function<void()> onChargerChange;

    /// The settings as the daemon last told each of them, or as they were sent since; nothing before it has
    /// told them.
    const std::optional<ChargingSettings>& settings() const { return settings_; }
    /// Those that it told last.
    SettingsMask toldLast() const { return toldLast_; }
    /// What it told last, and nothing that was merely sent; nothing where there is none, or before it has.
    const std::optional<SettingsTold>& told() const { return told_; }
    /// Called when the daemon sends settings: first, after each change by any client, and after it has
    /// refused what this client sent.
    std::function<void()> onSettingsChange;

    /// Settings that `act` sends are a person's wish, who may be asked for a password for them. All others
    /// are sent by the program itself, which asks nobody.
    void asPerson(const std::function<void()>& act) override;
    /// Why the daemon refused what a person asked for last, as one of `refusedTexts`; empty where it has not,
    /// or a person has tried anew. What the program itself sends may be refused without a word here.
    const std::string& refusal() const { return refusal_; }
    /// Called when that has changed.
    std::function<void()> onRefusal;

    /// Called with what the daemon tells all sessions of charging. What is no event, or one of a kind that is
    /// not known here, is dropped with a log line.
    std::function<void(const ChargeEvent&)> onEvent;

    /// The state as the daemon last told it; nothing where there is none, or it has not told yet.
    const std::optional<HSBatteryState>& state() const { return state_; }

    /// Asks for a charge to 100 % before a journey; nobody is asked for a password. `completion` is called
    /// once, with whether a quick charge is under way: not where the daemon refuses, or is not there.
    void beginTravelCharge(const std::function<void(bool isBegun)>& completion);

    void fetchCurrentState(StateHandler completion) override;
    /// A long history is read over several turns of the loop.
    void fetchHistory(HistoryHandler completion) override;
    /// Lost while `settings` are not known. Not sent where they repeat the last message: the model sends all
    /// of them after each push, which would wake the daemon for nothing.
    void updateSettings(const ChargingSettings& settings) override;

private:
    using ReplyHandler = std::function<void(sd_bus_message*)>;
    struct PendingCall;
    struct HistoryReading;

    void connect(const EventLoop& loop);
    void followDaemon();
    void follow(const char* interface, const wire::Message& signal, sd_bus_message_handler_t handler);
    void followRecords();
    void takeCharger();
    void takeSettings(const KeyedArchive& news, RecordFollower::Told told);
    void forgetRecords();
    void setDaemonMissing(bool isMissing);
    dbus::Message newCall(const wire::Message& message) const;
    /// `failed` is called where there is no answer, or an error.
    void send(dbus::Message call, ReplyHandler handler, const std::function<void()>& failed = {});
    template <typename Action>
    void attempt(const std::string& action, Action&& act);
    bool isWellFormed(sd_bus_message* message, const char* what, const char* signature);
    std::optional<HSBatteryState> readState(sd_bus_message* message, const char* what);
    void readOn(const std::weak_ptr<HistoryReading>& reading);

    void setRefusal(const std::string& why);

    int statePushed(sd_bus_message* signal);
    int changeRefused(sd_bus_message* signal);
    int occurred(sd_bus_message* signal);
    int disconnected(sd_bus_message* signal);

    EventLoop& loop_;
    const Clock& clock_;
    Log& log_;
    Complaints complaints_;
    dbus::Bus bus_;                   ///< null: there was no bus
    std::optional<NameOwner> daemon_; ///< the only one whose pushes count
    std::optional<RecordFollower> chargerRecord_;
    std::optional<RecordFollower> settingsRecord_;
    std::optional<HSBatteryState> state_;
    std::optional<ChargerReport> charger_;
    std::optional<ChargingSettings> settings_;
    SettingsMask toldLast_;
    std::optional<SettingsTold> told_;
    /// The last message to this daemon; nothing once it has contradicted that, and so may have refused it.
    std::optional<ChargingSettings> sentLast_;
    bool isPersonsWish_ = false; ///< while a person's deed is done
    /// What a person asked for, until the daemon holds it or has refused it.
    std::optional<ChargingSettings> asked_;
    std::string refusal_;
    bool isDaemonMissing_ = false;
    std::list<dbus::Slot> matches_;
    std::list<PendingCall> calls_;
    std::list<std::shared_ptr<HistoryReading>> readings_;
};

} // namespace velmora
