// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "bus/NameOwner.h"
#include "link/CallBudget.h"
#include "link/Callers.h"
#include "link/DaemonService.h"
#include "platform/Complaints.h"
#include "wire/ChargerInterface.h"

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// The daemon's end of the wire: serves a DaemonService on the system bus, with the names, types and order
/// that wire:: declares, and pushes state to the clients. Beside those interfaces stands
/// app.velmora.Charger: read-only properties, the settings as they are held, changes of single ones.
///
/// Never waits for the bus. Main thread only. Callers who may not do something are the service's business;
/// what the bus itself cannot tell about a caller is refused here (see Callers), and so are those who ask for
/// the history more often than anybody needs (see CallBudget).
class DaemonObject {
public:
    /// Calls for the state or the charger that are kept before `serve`; those past it are answered at once.
    static constexpr std::size_t maximumWaiting = 64;
    /// Messages that the bus has not taken yet; with more, nobody is given a history.
    static constexpr std::uint64_t maximumUnsent = 256;

    /// Connects and asks for the service name, neither queueing for it nor leaving it to others; `onOwned` or
    /// `onRefused` tells of the answer. Until then nobody is served, and whoever sees the name finds the
    /// object. `service` and `log` must outlive the object. Throws std::system_error where there is no bus.
    DaemonObject(const EventLoop& loop, DaemonService& service, Log& log);
    DaemonObject(const DaemonObject&) = delete;
    DaemonObject& operator=(const DaemonObject&) = delete;

    /// The service's state is worth telling from now on. Whoever asked for it since the name was owned has
    /// waited for this.
    void serve();

    /// Sends `state` to every client that listens.
    void push(const HSBatteryState& state);
    /// Sends `state` to one connection alone.
    void pushTo(const std::string& busName, const HSBatteryState& state);

    /// Announces the properties in which `report` differs from the last one.
    void chargerChanged(const ChargerReport& report);

    /// Tells every client, or one connection alone, that these settings have changed.
    void settingsChanged(const KeyedArchive& settings);
    void settingsChangedFor(const std::string& busName, const KeyedArchive& settings);

    /// Tells this bus from every other one, before and after; names of connections mean something on it
    /// alone. To be asked for once the name is owned: before, it would wait for the bus.
    std::string busId() const;

    /// Called once, when the service name is ours.
    std::function<void()> onOwned;
    /// Called once, when it cannot be had, with the reason as a phrase for the log.
    std::function<void(const std::string& why)> onRefused;

    /// Called when the machine has woken up, where logind is there to tell.
    std::function<void()> onResumed;

    /// Called when the bus hung up, which it does only at its own end. Nobody can be served any more.
    std::function<void()> onBusLost;

private:
    int nameAnswered(sd_bus_message* reply);
    void takeUp();
    void serveInterface(const char* interface, const std::vector<sd_bus_vtable>& table);
    void addMethod(std::vector<sd_bus_vtable>& table, const wire::Message& message,
                   sd_bus_message_handler_t handler);
    std::vector<sd_bus_vtable> methodTable();
    std::vector<sd_bus_vtable> chargerTable();
    const char* keep(std::string text);

    int getBatteryState(sd_bus_message* call);
    int getAnalyticsHistory(sd_bus_message* call);
    int updateSettings(sd_bus_message* call);
    template <ChargingCommand command>
    int controlCharging(sd_bus_message* call);
    int getSettings(sd_bus_message* call);
    int setSettings(sd_bus_message* call);
    int answerState(sd_bus_message* call);
    void answerHistory(sd_bus_message* call, uid_t user);
    void answerSettings(sd_bus_message* call, const ChargingSettings& settings);
    int introspect(sd_bus_message* call);
    int chargerAsked(sd_bus_message* call);
    void answerCharger(sd_bus_message* call, const std::string& name);
    int sleepChanged(sd_bus_message* signal);
    int disconnected(sd_bus_message* signal);
    static int chargerProperty(sd_bus* bus, const char* path, const char* interface, const char* property,
                               sd_bus_message* reply, void* self, sd_bus_error* error) noexcept;

    dbus::Message signal(const char* interface, const char* member) const;
    dbus::Message stateSignal(const HSBatteryState& state) const;
    dbus::Message settingsSignal(const KeyedArchive& settings) const;
    template <typename Action>
    void attempt(const char* action, Action&& act);
    /// Calls `answer` once there is something worth telling.
    int answerFresh(std::function<void()> answer);

    DaemonService& service_;
    Log& log_;
    Complaints complaints_;
    KeyedArchive announced_;       ///< the charger's properties as clients know them
    std::list<std::string> texts_; ///< the tables point at these, and sd-bus at the tables
    std::vector<sd_bus_vtable> methods_;
    std::vector<sd_bus_vtable> charger_;
    dbus::Bus bus_;
    Callers callers_;
    std::optional<NameOwner> login_; ///< the only one whose word on sleep counts
    CallBudget histories_;
    bool isServing_ = false;
    std::vector<std::function<void()>> waiting_; ///< answers, until `serve`
    std::vector<dbus::Slot> slots_;
};

} // namespace velmora
