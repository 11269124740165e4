// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/ChargerObject.h"

#include "bus/Records.h"
#include "link/ChargingCall.h"

#include <utility>

namespace velmora {

namespace {

template <int (ChargerObject::*Method)(sd_bus_message*)>
constexpr sd_bus_message_handler_t served = dbus::serve<ChargerObject, Method>;

constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties";

} // namespace

ChargerObject::ChargerObject(sd_bus* bus, Clients& clients, DaemonService& service)
    : bus_(bus), clients_(clients), service_(service), announced_(service.charger().archived())
{
    namespace charger = wire::charger;
    table_.addMethod(charger::getSettings, served<&ChargerObject::getSettings>);
    table_.addMethod(charger::setSettings, served<&ChargerObject::setSettings>);
    table_.addMethod(charger::pauseCharging, served<&ChargerObject::control<ChargingCommand::pause>>);
    table_.addMethod(charger::resumeCharging, served<&ChargerObject::control<ChargingCommand::resume>>);
    table_.addMethod(charger::getActions, served<&ChargerObject::getActions>);
    table_.addMethod(charger::beginTravelCharge, served<&ChargerObject::beginTravelCharge>);
    for (const auto& each : chargerProperties) table_.addProperty(each.name, each.type(), property);
    table_.addSignal(charger::settingsChanged);
    table_.addSignal(charger::changeRefused);
    table_.addSignal(charger::occurred);
}

void ChargerObject::publish()
{
    members_ = table_.serve(bus_, wire::objectPath, wire::charger::interface, this);
    // Beside the table, whose answers cannot wait for a look.
    dbus::check(sd_bus_add_object(bus_, out(questions_), wire::objectPath,
                                  served<&ChargerObject::propertiesAsked>, this),
                "sd_bus_add_object");
}

int ChargerObject::getSettings(sd_bus_message* call)
{
    clients_.identify(call, [this, kept = dbus::keep(call)](const Caller& caller) {
        answerSettings(kept.get(), service_.settings(caller));
    });
    return 1;
}

void ChargerObject::answerSettings(sd_bus_message* call, const ChargingSettings& settings)
{
    clients_.attempt("answer with the settings", [&] {
        const auto reply = dbus::replyTo(call);
        dbus::append(reply.get(), archived(settings));
        dbus::send(reply);
    });
}

int ChargerObject::setSettings(sd_bus_message* call)
{
    const auto read = readSettingsChange(call);
    const auto* change = std::get_if<SettingsChange>(&read);
    if (!change)
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "%s",
                                          std::get<std::string>(read).c_str());
    clients_.identify(call, [this, kept = dbus::keep(call), wish = *change](const Caller& caller) {
        service_.changeSettings(caller, wish,
                                [this, kept](const auto& outcome) { answerChange(kept.get(), outcome); });
    });
    return 1;
}

void ChargerObject::answerChange(sd_bus_message* call, const std::variant<ChargingSettings, Refusal>& outcome)
{
    const auto* refusal = std::get_if<Refusal>(&outcome);
    if (!refusal) return answerSettings(call, std::get<ChargingSettings>(outcome));
    answerRefusal(call, *refusal);
}

template <ChargingCommand command>
int ChargerObject::control(sd_bus_message* call)
{
    return controlCharging(clients_, service_, call, command);
}

int ChargerObject::getActions(sd_bus_message* call)
{
    const auto reply = dbus::replyTo(call);
    dbus::check(sd_bus_message_open_container(reply.get(), 'a', wire::recordType), "open a list");
    for (const auto& action : service_.chargerActions()) dbus::append(reply.get(), action.archived());
    dbus::check(sd_bus_message_close_container(reply.get()), "close a list");
    return dbus::send(reply);
}

int ChargerObject::beginTravelCharge(sd_bus_message* call)
{
    clients_.identify(call, [this, reply = chargingReply(call)](const Caller& caller) {
        service_.beginTravelCharge(caller, reply);
    });
    return 1;
}

/// What sd-bus would answer by itself, once there is something worth telling.
int ChargerObject::propertiesAsked(sd_bus_message* call)
{
    const bool isOne = sd_bus_message_is_method_call(call, propertiesInterface, "Get") > 0;
    if (!isOne && sd_bus_message_is_method_call(call, propertiesInterface, "GetAll") <= 0) return 0;
    const char* interface = "";
    const char* name = "";
    const int read = isOne ? sd_bus_message_read(call, "ss", &interface, &name)
                           : sd_bus_message_read(call, "s", &interface);
    const bool isOurs = read >= 0 && std::string_view(interface) == wire::charger::interface &&
                        (!isOne || announced_.find(name));
    dbus::check(sd_bus_message_rewind(call, true), "read a call again");
    if (!isOurs) return 0;
    return clients_.answerFresh([this, kept = dbus::keep(call), name = std::string(name)] {
        clients_.attempt("answer with the charger", [&] { answerProperties(kept.get(), name); });
    });
}

/// All of them without a name. Nobody is told what is not announced: who was would miss it when the next
/// report is as the last announced one.
void ChargerObject::answerProperties(sd_bus_message* call, const std::string& name)
{
    const auto reply = dbus::replyTo(call);
    changed(service_.charger());
    const KeyedArchive& report = announced_;
    const auto* value = name.empty() ? nullptr : report.find(name);
    if (value) {
        const char type[] = {dbus::typeOf(*value), '\0'};
        dbus::check(sd_bus_message_open_container(reply.get(), 'v', type), "open a value");
        dbus::append(reply.get(), *value);
        dbus::check(sd_bus_message_close_container(reply.get()), "close a value");
    } else {
        dbus::append(reply.get(), report);
    }
    dbus::send(reply);
}

/// For a question that names no interface, which sd-bus answers by itself.
int ChargerObject::property(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply,
                            void* self, sd_bus_error* error) noexcept
try {
    auto& object = *static_cast<ChargerObject*>(self);
    object.changed(object.service_.charger());
    const auto* value = object.announced_.find(name);
    if (!value) return sd_bus_error_set(error, SD_BUS_ERROR_UNKNOWN_PROPERTY, name);
    dbus::append(reply, *value);
    return 0;
} catch (const std::exception& failure) {
    return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, failure.what());
}

void ChargerObject::settingsChanged(const KeyedArchive& settings, const std::string& to)
{
    clients_.send(
        "announce settings", {wire::charger::interface, wire::charger::settingsChanged.member()},
        [&](auto* signal) { dbus::append(signal, settings); }, to);
}

void ChargerObject::changeRefused(Refused why, const std::string& to)
{
    clients_.send(
        "tell of a refusal", {wire::charger::interface, wire::charger::changeRefused.member()},
        [&](auto* signal) { dbus::check(sd_bus_message_append(signal, "s", textOf(why)), "append"); }, to);
}

void ChargerObject::occurred(const ChargeEvent& event)
{
    clients_.send("tell of an event", {wire::charger::interface, wire::charger::occurred.member()},
                  [&](auto* signal) { dbus::append(signal, event.archived()); });
}

void ChargerObject::changed(const ChargerReport& report)
{
    KeyedArchive current = report.archived();
    KeyedArchive changes;
    for (const auto& [name, value] : current.values()) {
        const auto* before = announced_.find(name);
        if (!before || *before != value) changes.encode(name, value);
    }
    announced_ = std::move(current);
    if (changes.values().empty()) return;
    clients_.send("announce the charger", {propertiesInterface, "PropertiesChanged"}, [&](auto* signal) {
        dbus::check(sd_bus_message_append(signal, "s", wire::charger::interface), "append");
        dbus::append(signal, changes);
        dbus::check(sd_bus_message_append(signal, "as", 0), "append");
    });
}

} // namespace velmora
