// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Peer.h"

#include "bus/Records.h"
#include "wire/ChargerReport.h"

namespace velmora {

namespace {
constexpr std::uint64_t patience = 30'000'000; // microseconds; sanitizers on a busy machine are slow
}

Peer::Peer(const EventLoop& loop) : bus_(dbus::openSystemBus(loop))
{
    match_ = dbus::match(bus_.get(), {.interface = wire::client_protocol::interface},
                         dbus::serve<Peer, &Peer::pushed>, this);
    sync(); // the bus now knows what to deliver
}

std::string Peer::name() const
{
    const char* unique = nullptr;
    dbus::check(sd_bus_get_unique_name(bus_.get(), &unique), "name");
    return unique;
}

void Peer::sync()
{
    dbus::check(sd_bus_call_method(bus_.get(), dbus::busName, dbus::busPath, dbus::busName, "GetId", nullptr,
                                   nullptr, nullptr),
                "GetId");
}

void Peer::serve(std::function<int(sd_bus_message*)> answer)
{
    answer_ = std::move(answer);
    dbus::check(
        sd_bus_add_object(bus_.get(), out(object_), wire::objectPath, dbus::serve<Peer, &Peer::called>, this),
        "object");
    dbus::check(sd_bus_request_name(bus_.get(), wire::serviceName, 0), "name");
}

int Peer::pushed(sd_bus_message* signal)
{
    pushes.emplace_back(dbus::readArchive(signal));
    return 0;
}

dbus::Message Peer::call(const char* path, const char* interface, const char* member) const
{
    return dbus::newCall(bus_.get(), wire::serviceName, path, interface, member);
}

dbus::Message Peer::call(const wire::Message& message) const
{
    return call(wire::objectPath, wire::daemon_protocol::interface, message.member().c_str());
}

dbus::Message Peer::ask(const dbus::Message& call)
{
    dbus::Message reply;
    sd_bus_error error{};
    sd_bus_call(bus_.get(), call.get(), patience, &error, out(reply));
    lastError = error.name ? error.name : "";
    sd_bus_error_free(&error);
    return reply;
}

void Peer::tell(const dbus::Message& call) const
{
    sd_bus_message_set_expect_reply(call.get(), false);
    dbus::check(sd_bus_send(bus_.get(), call.get(), nullptr), "send");
}

dbus::Message Peer::call(const ChargingSettings& settings) const
{
    auto message = call(wire::daemon_protocol::updateSettings);
    dbus::append(message.get(), settings);
    return message;
}

std::optional<HSBatteryState> Peer::state()
{
    const auto reply = ask(call(wire::daemon_protocol::getBatteryState));
    if (!reply) return std::nullopt;
    return HSBatteryState(dbus::readArchive(reply.get()));
}

std::optional<std::vector<HSHistorySnapshot>> Peer::history()
{
    const auto reply = ask(call(wire::daemon_protocol::getAnalyticsHistory));
    if (!reply) return std::nullopt;
    std::vector<HSHistorySnapshot> samples;
    dbus::check(sd_bus_message_enter_container(reply.get(), 'a', wire::recordType), "history");
    while (sd_bus_message_at_end(reply.get(), 0) == 0)
        samples.emplace_back(dbus::readArchive(reply.get()), Date{});
    return samples;
}

std::string Peer::introspection()
{
    const auto reply = ask(call(wire::objectPath, "org.freedesktop.DBus.Introspectable", "Introspect"));
    const char* text = nullptr;
    return reply && sd_bus_message_read(reply.get(), "s", &text) > 0 ? text : "";
}

std::int64_t Peer::number(const char* property)
{
    const auto get = call(wire::objectPath, "org.freedesktop.DBus.Properties", "Get");
    dbus::check(sd_bus_message_append(get.get(), "ss", ChargerReport::interface, property), property);
    const auto reply = ask(get);
    std::int64_t value = -1;
    if (reply) sd_bus_message_read(reply.get(), "v", "x", &value);
    return value;
}

} // namespace velmora
