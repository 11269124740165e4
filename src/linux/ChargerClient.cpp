// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ChargerClient.h"

#include "VelmoraProtocol.h"

#include <string>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

constexpr auto properties = "org.freedesktop.DBus.Properties";
constexpr auto deed = "read the charger's properties";

} // namespace

ChargerClient::ChargerClient(sd_bus* bus, const NameOwner& daemon, Complaints& complaints)
    : bus_(bus),
      daemon_(daemon),
      complaints_(complaints),
      changes_(dbus::match(bus,
                           std::string("type='signal',sender='") + wire::serviceName + "',path='" +
                               wire::objectPath + "',interface='" + properties +
                               "',member='PropertiesChanged',arg0='" + ChargerReport::interface + "'",
                           dbus::serve<ChargerClient, &ChargerClient::changed>, this))
{
    fetch();
}

void ChargerClient::fetch()
{
    take([this] {
        sd_bus_message* made = nullptr;
        dbus::check(sd_bus_message_new_method_call(bus_, &made, wire::serviceName, wire::objectPath,
                                                   properties, "GetAll"),
                    "GetAll");
        const dbus::Message call(made);
        dbus::check(sd_bus_message_append(made, "s", ChargerReport::interface), "GetAll");
        dbus::check(sd_bus_message_set_auto_start(made, false), "GetAll");
        sd_bus_slot* slot = nullptr;
        dbus::check(sd_bus_call_async(bus_, &slot, made, dbus::serve<ChargerClient, &ChargerClient::answered>,
                                      this, 0),
                    "GetAll");
        question_.reset(slot);
    });
}

void ChargerClient::forget()
{
    question_.reset();
    set(std::nullopt);
}

int ChargerClient::answered(sd_bus_message* reply)
{
    const auto answer = std::move(question_);
    if (sd_bus_message_is_method_error(reply, nullptr)) return 0;
    take([&] { set(ChargerReport::unarchived(dbus::readArchive(reply))); });
    return 0;
}

int ChargerClient::changed(sd_bus_message* signal)
{
    if (!daemon_.sent(signal) || !report_) return 0; // else the answer that is on its way says it
    take([&] {
        dbus::check(sd_bus_message_skip(signal, "s"), "skip the interface");
        KeyedArchive whole = report_->archived();
        whole.update(dbus::readArchive(signal));
        set(ChargerReport::unarchived(whole));
    });
    return 0;
}

void ChargerClient::take(const std::function<void()>& read)
try {
    read();
    complaints_.settle(deed);
} catch (const std::system_error& failure) {
    complaints_.raise(deed, std::string("could not ") + deed + ": " + failure.what());
}

void ChargerClient::set(std::optional<ChargerReport> report)
{
    if (std::exchange(report_, std::move(report)) == report_) return;
    if (const auto told = onChange) told();
}

} // namespace velmora
