// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/DaemonObject.h"

#include "bus/Records.h"
#include "link/Introspection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

template <int (DaemonObject::*Method)(sd_bus_message*)>
constexpr sd_bus_message_handler_t served = dbus::serve<DaemonObject, Method>;

sd_bus_vtable tableStart()
{
    return SD_BUS_VTABLE_START(0);
}

sd_bus_vtable tableEnd()
{
    return SD_BUS_VTABLE_END;
}

constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr auto loginName = "org.freedesktop.login1";

/// Throws std::system_error unless the bus's answer to RequestName is that the name is ours.
void checkOwned(sd_bus_message* reply)
{
    constexpr auto what = "cannot own the service name";
    dbus::check(-sd_bus_message_get_errno(reply), what);
    std::uint32_t outcome = 0;
    dbus::check(sd_bus_message_read(reply, "u", &outcome), what);
    constexpr std::uint32_t isOwner = 1, wasOwner = 4; // the other two mean that somebody else is
    if (outcome != isOwner && outcome != wasOwner) dbus::check(-EEXIST, what);
}

std::string phrase(const std::system_error& failure)
{
    switch (failure.code().value()) {
    case EEXIST:
        return std::string("another program owns ") + wire::serviceName;
    case EACCES:
    case EPERM:
        return std::string("the bus does not let this user own ") + wire::serviceName;
    default:
        return failure.what();
    }
}

} // namespace

DaemonObject::DaemonObject(const EventLoop& loop, DaemonService& service, Log& log)
    : service_(service),
      log_(log),
      complaints_(log, "DaemonObject"),
      announced_(service.charger().archived()),
      methods_(methodTable()),
      charger_(chargerTable()),
      bus_(dbus::openSystemBus(loop)),
      callers_(bus_.get(), log, [this](const std::string& name) { service_.callerLeft(name); })
{
    slots_.push_back(dbus::onDisconnected(bus_.get(), served<&DaemonObject::disconnected>, this));
    dbus::check(sd_bus_request_name_async(bus_.get(), out(slots_.emplace_back()), wire::serviceName, 0,
                                          served<&DaemonObject::nameAnswered>, this),
                "cannot own the service name");
}

int DaemonObject::nameAnswered(sd_bus_message* reply)
try {
    checkOwned(reply);
    takeUp();
    if (const auto handler = onOwned) handler();
    return 0;
} catch (const std::system_error& failure) {
    if (const auto handler = onRefused) handler(phrase(failure));
    return 0;
}

/// What is sent to the name comes after the answer that it is ours, and so finds all this.
void DaemonObject::takeUp()
{
    serveInterface(wire::daemon_protocol::interface, methods_);
    serveInterface(wire::charger::interface, charger_);
    // Beside the tables, which cannot carry our annotations.
    dbus::check(sd_bus_add_object(bus_.get(), out(slots_.emplace_back()), wire::objectPath,
                                  served<&DaemonObject::introspect>, this),
                "sd_bus_add_object");
    // Beside them too: their answers cannot wait for a look.
    dbus::check(sd_bus_add_object(bus_.get(), out(slots_.emplace_back()), wire::objectPath,
                                  served<&DaemonObject::chargerAsked>, this),
                "sd_bus_add_object");
    login_.emplace(bus_.get(), loginName);
    slots_.push_back(dbus::match(bus_.get(),
                                 {.sender = loginName,
                                  .path = "/org/freedesktop/login1",
                                  .interface = "org.freedesktop.login1.Manager",
                                  .member = "PrepareForSleep"},
                                 served<&DaemonObject::sleepChanged>, this));
}

void DaemonObject::serveInterface(const char* interface, const std::vector<sd_bus_vtable>& table)
{
    dbus::check(sd_bus_add_object_vtable(bus_.get(), out(slots_.emplace_back()), wire::objectPath, interface,
                                         table.data(), this),
                interface);
}

const char* DaemonObject::keep(std::string text)
{
    return texts_.emplace_back(std::move(text)).c_str();
}

void DaemonObject::addMethod(std::vector<sd_bus_vtable>& table, const wire::Message& message,
                             sd_bus_message_handler_t handler)
{
    table.push_back(SD_BUS_METHOD(keep(message.member()), keep(wire::Message::signature(message.arguments)),
                                  keep(wire::Message::signature(message.reply)), handler,
                                  SD_BUS_VTABLE_UNPRIVILEGED));
}

std::vector<sd_bus_vtable> DaemonObject::methodTable()
{
    namespace protocol = wire::daemon_protocol;
    std::vector table{tableStart()};
    addMethod(table, protocol::getBatteryState, served<&DaemonObject::getBatteryState>);
    addMethod(table, protocol::getAnalyticsHistory, served<&DaemonObject::getAnalyticsHistory>);
    addMethod(table, protocol::updateSettings, served<&DaemonObject::updateSettings>);
    addMethod(table, protocol::toggleCharging,
              served<&DaemonObject::controlCharging<ChargingCommand::toggle>>);
    table.push_back(tableEnd());
    return table;
}

std::vector<sd_bus_vtable> DaemonObject::chargerTable()
{
    namespace charger = wire::charger;
    std::vector table{tableStart()};
    addMethod(table, charger::getSettings, served<&DaemonObject::getSettings>);
    addMethod(table, charger::setSettings, served<&DaemonObject::setSettings>);
    addMethod(table, charger::pauseCharging, served<&DaemonObject::controlCharging<ChargingCommand::pause>>);
    addMethod(table, charger::resumeCharging,
              served<&DaemonObject::controlCharging<ChargingCommand::resume>>);
    for (const auto& property : chargerProperties)
        table.push_back(SD_BUS_PROPERTY(property.name, property.type(), chargerProperty, 0,
                                        SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE));
    table.push_back(SD_BUS_SIGNAL(keep(charger::settingsChanged.member()),
                                  keep(wire::Message::signature(charger::settingsChanged.arguments)), 0));
    table.push_back(tableEnd());
    return table;
}

template <typename Action>
void DaemonObject::attempt(const char* action, Action&& act)
try {
    act();
} catch (const std::system_error& failure) {
    complaints_.raise(action, std::string("Could not ") + action + ": " + failure.what() + ".");
}

void DaemonObject::serve()
{
    isServing_ = true;
    for (const auto& answer : std::exchange(waiting_, {})) answer();
}

int DaemonObject::answerFresh(std::function<void()> answer)
{
    if (isServing_)
        service_.ask(std::move(answer));
    else if (waiting_.size() < maximumWaiting)
        waiting_.push_back(std::move(answer));
    else
        answer();
    return 1;
}

int DaemonObject::getBatteryState(sd_bus_message* call)
{
    return answerFresh([this, kept = dbus::keep(call)] {
        attempt("answer with the state", [&] { answerState(kept.get()); });
    });
}

int DaemonObject::answerState(sd_bus_message* call)
{
    const auto reply = dbus::replyTo(call);
    dbus::append(reply.get(), service_.batteryState().archived());
    return dbus::send(reply);
}

int DaemonObject::getAnalyticsHistory(sd_bus_message* call)
{
    callers_.identify(call, [this, kept = dbus::keep(call)](const Caller& caller) {
        service_.ask([this, kept, user = caller.uid] {
            attempt("answer with the history", [&] { answerHistory(kept.get(), user); });
        });
    });
    return 1;
}

/// A hundred kilobytes for a call of a hundred bytes, that a client need not even read.
void DaemonObject::answerHistory(sd_bus_message* call, uid_t user)
{
    std::uint64_t unsent = 0;
    dbus::check(sd_bus_get_n_queued_write(bus_.get(), &unsent), "look at the queue");
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

/// One way, yet whoever waits for an answer is told that the settings have been looked at.
int DaemonObject::updateSettings(sd_bus_message* call)
{
    callers_.identify(
        call, [this, kept = dbus::keep(call), settings = dbus::readSettings(call)](const Caller& caller) {
            service_.updateSettings(caller, settings);
            sd_bus_reply_method_return(kept.get(), nullptr);
        });
    return 1;
}

template <ChargingCommand command>
int DaemonObject::controlCharging(sd_bus_message* call)
{
    const auto reply = [kept = dbus::keep(call)](std::optional<bool> isAllowed) {
        if (isAllowed)
            sd_bus_reply_method_return(kept.get(), "b", *isAllowed);
        else
            sd_bus_reply_method_errorf(kept.get(), SD_BUS_ERROR_ACCESS_DENIED, "not authorised to do this");
    };
    callers_.identify(
        call, [this, reply](const Caller& caller) { service_.controlCharging(caller, command, reply); });
    return 1;
}

int DaemonObject::getSettings(sd_bus_message* call)
{
    callers_.identify(call, [this, kept = dbus::keep(call)](const Caller& caller) {
        attempt("answer with the settings", [&] { answerSettings(kept.get(), service_.settings(caller)); });
    });
    return 1;
}

void DaemonObject::answerSettings(sd_bus_message* call, const ChargingSettings& settings)
{
    const auto reply = dbus::replyTo(call);
    dbus::append(reply.get(), archived(settings));
    dbus::send(reply);
}

int DaemonObject::setSettings(sd_bus_message* call)
{
    const auto read = readSettingsChange(call);
    const auto* change = std::get_if<SettingsChange>(&read);
    if (!change)
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "%s",
                                          std::get<std::string>(read).c_str());
    const auto reply = [this, kept = dbus::keep(call)](const auto& outcome) {
        const auto* refusal = std::get_if<Refusal>(&outcome);
        if (!refusal)
            return attempt("answer with the settings",
                           [&] { answerSettings(kept.get(), std::get<ChargingSettings>(outcome)); });
        const bool isDenied = refusal->kind == Refusal::Kind::denied;
        sd_bus_reply_method_errorf(kept.get(),
                                   isDenied ? SD_BUS_ERROR_ACCESS_DENIED : SD_BUS_ERROR_INVALID_ARGS, "%s",
                                   refusal->reason.c_str());
    };
    callers_.identify(call, [this, wish = *change, reply](const Caller& caller) {
        service_.changeSettings(caller, wish, reply);
    });
    return 1;
}

/// What sd-bus would answer by itself, once there is something worth telling.
int DaemonObject::chargerAsked(sd_bus_message* call)
{
    const bool isOne = sd_bus_message_is_method_call(call, propertiesInterface, "Get") > 0;
    if (!isOne && sd_bus_message_is_method_call(call, propertiesInterface, "GetAll") <= 0) return 0;
    const char* interface = "";
    const char* name = "";
    const int read = isOne ? sd_bus_message_read(call, "ss", &interface, &name)
                           : sd_bus_message_read(call, "s", &interface);
    const bool isOurs = read >= 0 && std::string_view(interface) == ChargerReport::interface &&
                        (!isOne || announced_.find(name));
    dbus::check(sd_bus_message_rewind(call, true), "read a call again");
    if (!isOurs) return 0;
    return answerFresh([this, kept = dbus::keep(call), name = std::string(name)] {
        attempt("answer with the charger", [&] { answerCharger(kept.get(), name); });
    });
}

void DaemonObject::answerCharger(sd_bus_message* call, const std::string& name)
{
    const auto reply = dbus::replyTo(call);
    const KeyedArchive report = service_.charger().archived();
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

int DaemonObject::introspect(sd_bus_message* call)
{
    if (sd_bus_message_is_method_call(call, "org.freedesktop.DBus.Introspectable", "Introspect") <= 0)
        return 0;
    return sd_bus_reply_method_return(call, "s", daemonIntrospection().c_str());
}

int DaemonObject::chargerProperty(sd_bus*, const char*, const char*, const char* property,
                                  sd_bus_message* reply, void* self, sd_bus_error* error) noexcept
try {
    const KeyedArchive report = static_cast<DaemonObject*>(self)->service_.charger().archived();
    const auto* value = report.find(property);
    if (!value) return sd_bus_error_set(error, SD_BUS_ERROR_UNKNOWN_PROPERTY, property);
    dbus::append(reply, *value);
    return 0;
} catch (const std::exception& failure) {
    return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, failure.what());
}

std::string DaemonObject::busId() const
{
    sd_id128_t id{};
    dbus::check(sd_bus_get_bus_id(bus_.get(), &id), "sd_bus_get_bus_id");
    std::array<char, SD_ID128_STRING_MAX> text{};
    return sd_id128_to_string(id, text.data());
}

int DaemonObject::sleepChanged(sd_bus_message* signal)
{
    if (!login_->sent(signal)) return 0;
    int isGoingToSleep = 1;
    if (sd_bus_message_read(signal, "b", &isGoingToSleep) < 0 || isGoingToSleep) return 0;
    if (const auto handler = onResumed) handler();
    return 0;
}

int DaemonObject::disconnected(sd_bus_message*)
{
    log_.error("DaemonObject", "The system bus hung up: no client can reach this daemon any more.");
    if (const auto handler = onBusLost) handler();
    return 0;
}

dbus::Message DaemonObject::signal(const char* interface, const char* member) const
{
    dbus::Message made;
    dbus::check(sd_bus_message_new_signal(bus_.get(), out(made), wire::objectPath, interface, member),
                member);
    return made;
}

dbus::Message DaemonObject::stateSignal(const HSBatteryState& state) const
{
    auto push = signal(wire::client_protocol::interface,
                       wire::client_protocol::batteryStateDidChange.member().c_str());
    dbus::append(push.get(), state.archived());
    return push;
}

void DaemonObject::push(const HSBatteryState& state)
{
    attempt("push the state", [&] { dbus::send(stateSignal(state)); });
}

void DaemonObject::pushTo(const std::string& busName, const HSBatteryState& state)
{
    attempt("push the state to one client", [&] {
        const auto push = stateSignal(state);
        dbus::check(sd_bus_message_set_destination(push.get(), busName.c_str()), "address");
        dbus::send(push);
    });
}

dbus::Message DaemonObject::settingsSignal(const KeyedArchive& settings) const
{
    auto news = signal(wire::charger::interface, wire::charger::settingsChanged.member().c_str());
    dbus::append(news.get(), settings);
    return news;
}

void DaemonObject::settingsChanged(const KeyedArchive& settings)
{
    attempt("announce settings", [&] { dbus::send(settingsSignal(settings)); });
}

void DaemonObject::settingsChangedFor(const std::string& busName, const KeyedArchive& settings)
{
    attempt("announce settings to one client", [&] {
        const auto news = settingsSignal(settings);
        dbus::check(sd_bus_message_set_destination(news.get(), busName.c_str()), "address");
        dbus::send(news);
    });
}

void DaemonObject::chargerChanged(const ChargerReport& report)
{
    KeyedArchive current = report.archived();
    KeyedArchive changes;
    for (const auto& [name, value] : current.values()) {
        const auto* before = announced_.find(name);
        if (!before || *before != value) changes.encode(name, value);
    }
    announced_ = std::move(current);
    if (changes.values().empty()) return;
    attempt("announce the charger", [&] {
        const auto news = signal(propertiesInterface, "PropertiesChanged");
        dbus::check(sd_bus_message_append(news.get(), "s", ChargerReport::interface), "append");
        dbus::append(news.get(), changes);
        dbus::check(sd_bus_message_append(news.get(), "as", 0), "append");
        dbus::send(news);
    });
}

} // namespace velmora
