// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/DaemonObject.h"

#include "link/Introspection.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <system_error>

namespace velmora {

namespace {

template <int (DaemonObject::*Method)(sd_bus_message*)>
constexpr sd_bus_message_handler_t served = dbus::serve<DaemonObject, Method>;

constexpr auto loginName = "org.freedesktop.login1";
constexpr auto loginPath = "/org/freedesktop/login1";
constexpr auto loginManager = "org.freedesktop.login1.Manager";

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
    : log_(log),
      bus_(dbus::openSystemBus(loop)),
      clients_(bus_.get(), service, log),
      authority_(bus_.get(), log),
      protocol_(bus_.get(), clients_, service),
      charger_(bus_.get(), clients_, service),
      batteries_(bus_.get(), clients_, service)
{
    slots_.push_back(dbus::onDisconnected(bus_.get(), served<&DaemonObject::disconnected>, this));
    publish();
    dbus::check(sd_bus_request_name_async(bus_.get(), out(slots_.emplace_back()), wire::serviceName, 0,
                                          served<&DaemonObject::nameAnswered>, this),
                "cannot own the service name");
}

int DaemonObject::nameAnswered(sd_bus_message* reply)
try {
    checkOwned(reply);
    followSleep();
    if (const auto handler = onOwned) handler();
    return 0;
} catch (const std::system_error& failure) {
    if (const auto handler = onRefused) handler(phrase(failure));
    return 0;
}

/// Before the name is asked for: the call for which the bus started this program comes ahead of the answer
/// that the name is ours.
void DaemonObject::publish()
{
    protocol_.publish();
    charger_.publish();
    batteries_.publish();
    // Beside their tables, which cannot carry our annotations.
    dbus::check(sd_bus_add_object(bus_.get(), out(slots_.emplace_back()), wire::objectPath,
                                  served<&DaemonObject::introspect>, this),
                "sd_bus_add_object");
}

void DaemonObject::followSleep()
{
    login_.emplace(bus_.get(), loginName);
    slots_.push_back(dbus::match(
        bus_.get(),
        {.sender = loginName, .path = loginPath, .interface = loginManager, .member = "PrepareForSleep"},
        served<&DaemonObject::sleepChanged>, this));
}

int DaemonObject::introspect(sd_bus_message* call)
{
    if (sd_bus_message_is_method_call(call, "org.freedesktop.DBus.Introspectable", "Introspect") <= 0)
        return 0;
    return sd_bus_reply_method_return(call, "s", daemonIntrospection().c_str());
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
    if (sd_bus_message_read(signal, "b", &isGoingToSleep) < 0) return 0;
    if (!isGoingToSleep) {
        if (const auto handler = onResumed) handler();
    } else if (const auto handler = onSleep) {
        handler(lifetime_.guard([this] { delaySleep(false); }));
    }
    return 0;
}

void DaemonObject::delaySleep(bool isWanted)
{
    delayAsked_.reset();
    if (!isWanted) sleepDelay_ = FileDescriptor();
    if (!isWanted || sleepDelay_ || !login_) return;
    sd_bus_call_method_async(bus_.get(), out(delayAsked_), loginName, loginPath, loginManager, "Inhibit",
                             served<&DaemonObject::sleepDelayed>, this, "ssss", "sleep", "Velmora",
                             "Charging is paused for heat, which has to end first", "delay");
}

int DaemonObject::sleepDelayed(sd_bus_message* reply)
{
    int file = -1;
    // Without logind nobody asks for leave to sleep.
    if (sd_bus_message_is_method_error(reply, SD_BUS_ERROR_SERVICE_UNKNOWN) > 0) return 0;
    if (sd_bus_message_is_method_error(reply, nullptr) > 0 || sd_bus_message_read(reply, "h", &file) < 0) {
        log_.warning("DaemonObject", "Cannot have the machine wait with its sleep until a pause for heat has "
                                     "ended: the pause may last over the sleep.");
        return 0;
    }
    sleepDelay_ = FileDescriptor(::fcntl(file, F_DUPFD_CLOEXEC, 0)); // the message closes its own
    return 0;
}

int DaemonObject::disconnected(sd_bus_message*)
{
    log_.error("DaemonObject", "The system bus hung up: no client can reach this daemon any more.");
    if (const auto handler = onBusLost) handler();
    return 0;
}

} // namespace velmora
