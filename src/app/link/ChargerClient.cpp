// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/ChargerClient.h"

#include "bus/Records.h"
#include "wire/VelmoraProtocol.h"

#include <string>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

constexpr auto properties = "org.freedesktop.DBus.Properties";
constexpr auto action = "read the charger's properties";

} // namespace

ChargerClient::ChargerClient(sd_bus* bus, const NameOwner& daemon, Complaints& complaints)
    : bus_(bus),
      daemon_(daemon),
      complaints_(complaints),
      changes_(dbus::match(bus,
                           {.sender = wire::serviceName,
                            .path = wire::objectPath,
                            .interface = properties,
                            .member = "PropertiesChanged",
                            .arg0 = ChargerReport::interface},
                           dbus::serve<ChargerClient, &ChargerClient::changed>, this))
{
    fetch();
}

void ChargerClient::fetch()
try {
    const auto call = dbus::newCall(bus_, wire::serviceName, wire::objectPath, properties, "GetAll");
    dbus::check(sd_bus_message_append(call.get(), "s", ChargerReport::interface), action);
    question_ = dbus::ask(bus_, call, dbus::serve<ChargerClient, &ChargerClient::answered>, this);
} catch (const std::system_error& failure) {
    complain(failure.what());
}

void ChargerClient::forget()
{
    question_.reset();
    report_.reset();
}

int ChargerClient::answered(sd_bus_message* reply)
{
    const auto answer = std::move(question_);
    if (const auto* error = sd_bus_message_get_error(reply)) {
        if (daemon_.exists()) complain(dbus::textOf(*error));
        return 0;
    }
    if (const auto values = read(reply)) set(ChargerReport::unarchived(*values));
    return 0;
}

int ChargerClient::changed(sd_bus_message* signal)
{
    if (!daemon_.sent(signal)) return 0;
    if (!report_) {
        if (!question_) fetch(); // else the answer that is on its way says it
        return 0;
    }
    dbus::check(sd_bus_message_skip(signal, "s"), action);
    if (const auto values = read(signal)) {
        KeyedArchive whole = report_->archived();
        whole.update(*values);
        set(ChargerReport::unarchived(whole));
    }
    return 0;
}

std::optional<KeyedArchive> ChargerClient::read(sd_bus_message* message)
try {
    auto values = dbus::readArchive(message);
    complaints_.settle(action);
    return values;
} catch (const std::system_error& failure) {
    complain(failure.what());
    return std::nullopt;
}

void ChargerClient::complain(const std::string& why)
{
    complaints_.raise(action, std::string("could not ") + action + ": " + why);
}

/// Nothing comes after it: who is told may destroy the client.
void ChargerClient::set(ChargerReport report)
{
    if (report_ == report) return;
    report_ = std::move(report);
    if (const auto handler = onChange) handler();
}

} // namespace velmora
