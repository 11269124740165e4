// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/ProtocolObject.h"

#include "bus/Records.h"
#include "link/ChargingCall.h"

#include <chrono>

namespace velmora {

namespace {

template <int (ProtocolObject::*Method)(sd_bus_message*)>
constexpr sd_bus_message_handler_t served = dbus::serve<ProtocolObject, Method>;

} // namespace

ProtocolObject::ProtocolObject(sd_bus* bus, Clients& clients, DaemonService& service)
    : bus_(bus), clients_(clients), service_(service)
{
    namespace protocol = wire::daemon_protocol;
    table_.addMethod(protocol::getBatteryState, served<&ProtocolObject::getBatteryState>);
    table_.addMethod(protocol::getAnalyticsHistory, served<&ProtocolObject::getAnalyticsHistory>);
    table_.addMethod(protocol::updateSettings, served<&ProtocolObject::updateSettings>);
    table_.addMethod(protocol::toggleCharging, served<&ProtocolObject::toggleCharging>);
}

void ProtocolObject::publish()
{
    slot_ = table_.serve(bus_, wire::objectPath, wire::daemon_protocol::interface, this);
}

int ProtocolObject::getBatteryState(sd_bus_message* call)
{
    return clients_.answerFresh([this, kept = dbus::keep(call)] {
        clients_.attempt("answer with the state", [&] { answerState(kept.get()); });
    });
}

void ProtocolObject::answerState(sd_bus_message* call)
{
    const auto reply = dbus::replyTo(call);
    dbus::append(reply.get(), service_.batteryState().archived());
    dbus::send(reply);
}

int ProtocolObject::getAnalyticsHistory(sd_bus_message* call)
{
    clients_.identify(call, [this, kept = dbus::keep(call)](const Caller& caller) {
        service_.ask([this, kept, user = caller.uid] {
            clients_.attempt("answer with the history", [&] { answerHistory(kept.get(), user); });
        });
    });
    return 1;
}

/// A hundred kilobytes for a call of a hundred bytes, that a client need not even read.
void ProtocolObject::answerHistory(sd_bus_message* call, uid_t user)
{
    std::uint64_t unsent = 0;
    dbus::check(sd_bus_get_n_queued_write(bus_, &unsent), "look at the queue");
    if (unsent > maximumUnsent || !histories_.spend(user, std::chrono::steady_clock::now())) {
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_LIMITS_EXCEEDED, "asked too often");
        return;
    }
    const auto reply = dbus::replyTo(call);
    dbus::check(sd_bus_message_open_container(reply.get(), 'a', wire::recordType), "open a history");
    for (const auto& sample : service_.analyticsHistory()) dbus::append(reply.get(), sample.archived());
    dbus::check(sd_bus_message_close_container(reply.get()), "close a history");
    dbus::send(reply);
}

/// The message needs no reply. A caller that expects one gets an empty reply once the settings were examined,
/// whether they were taken or refused.
int ProtocolObject::updateSettings(sd_bus_message* call)
{
    clients_.identify(
        call, [this, kept = dbus::keep(call), settings = dbus::readSettings(call)](const Caller& caller) {
            service_.updateSettings(caller, settings);
            sd_bus_reply_method_return(kept.get(), nullptr);
        });
    return 1;
}

int ProtocolObject::toggleCharging(sd_bus_message* call)
{
    return controlCharging(clients_, service_, call, ChargingCommand::toggle);
}

void ProtocolObject::push(const HSBatteryState& state, const std::string& to)
{
    using namespace wire::client_protocol;
    clients_.send(
        "push the state", {interface, batteryStateDidChange.member()},
        [&](auto* signal) { dbus::append(signal, state.archived()); }, to);
}

} // namespace velmora
