// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/VelmoraLink.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "bus/Records.h"

#include <cmath>
#include <system_error>
#include <utility>

namespace velmora::ctl {

namespace {

constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties";

Failure absentFailure()
{
    return {ExitStatus::noDaemon,
            tr("Velmora does not run in this session: it is what knows fleet and account. This starts it: "
               "velmora "
               "--background, or without a desktop systemctl --user enable --now velmora")};
}

Failure unansweredFailure()
{
    return {ExitStatus::noDaemon, tr("Velmora does not answer in this session.")};
}

Failure failureOf(const sd_bus_error& error, std::string_view)
{
    const std::string_view name = error.name ? error.name : "";
    if (isAnyOf(name, {SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER})) return absentFailure();
    if (isAnyOf(name, {SD_BUS_ERROR_NO_REPLY, SD_BUS_ERROR_TIMEOUT, SD_BUS_ERROR_DISCONNECTED}))
        return unansweredFailure();
    if (isAnyOf(name, {SD_BUS_ERROR_UNKNOWN_OBJECT, SD_BUS_ERROR_UNKNOWN_INTERFACE,
                       SD_BUS_ERROR_UNKNOWN_METHOD, SD_BUS_ERROR_UNKNOWN_PROPERTY}))
        return nonsenseOfVelmora();
    return {ExitStatus::failed, tr("Velmora answers: %1.", printable(dbus::textOf(error)))};
}

constexpr Respondent velmora{failureOf, nonsenseOfVelmora};

dbus::Bus openBus(const EventLoop& loop)
try {
    return dbus::openSessionBus(loop);
} catch (const std::system_error& failure) {
    throw Failure(
        ExitStatus::noDaemon,
        tr("The session bus cannot be reached: %1. Fleet and account are a user's: this is for the user who "
           "is logged in, without sudo.",
           failure.code().message()));
}

void readProperty(sd_bus_message* message, const wire::face::Face& face, const ReadValue& read)
{
    const char* name = nullptr;
    const char* type = nullptr;
    dbus::check(sd_bus_message_read_basic(message, 's', &name), "read");
    dbus::check(sd_bus_message_peek_type(message, nullptr, &type), "peek");
    const auto declared = std::ranges::find_if(
        face.properties, [=](const auto& one) { return one.name == std::string_view(name); });
    if (declared == face.properties.end()) {
        dbus::check(sd_bus_message_skip(message, "v"), "skip");
        return;
    }
    if (!type || declared->type != std::string_view(type)) throw nonsenseOfVelmora();
    enter(message, 'v', type);
    read(message, name);
    if (sd_bus_message_at_end(message, 0) == 0) // nobody here wants to know it
        dbus::check(sd_bus_message_skip(message, nullptr), "skip");
    leave(message);
}

} // namespace

Failure nonsenseOfVelmora()
{
    return {ExitStatus::failed,
            tr("Velmora's answer cannot be understood: is it of another version than velmoractl? This "
               "starts it anew: velmora --quit, then velmora --background")};
}

void readProperties(const dbus::Message& reply, const wire::face::Face& face, const ReadValue& read)
{
    readAnswer(velmora, reply, wire::recordType, [&](auto* message) {
        enter(message, 'a', "{sv}");
        while (isEntered(message, 'e', "sv")) {
            readProperty(message, face, read);
            leave(message);
        }
        leave(message);
        return true;
    });
}

bool readTruth(sd_bus_message* message)
{
    int value = 0;
    dbus::check(sd_bus_message_read_basic(message, 'b', &value), "read");
    return value != 0;
}

std::string readText(sd_bus_message* message)
{
    const char* text = nullptr;
    dbus::check(sd_bus_message_read_basic(message, 's', &text), "read");
    return std::string(text).substr(0, dbus::maximumTextBytes);
}

std::optional<std::string> readOptionalText(sd_bus_message* message)
{
    std::optional<std::string> text;
    enter(message, 'a', "s");
    while (dbus::check(sd_bus_message_at_end(message, false), "look") == 0) text = readText(message);
    leave(message);
    return text;
}

std::optional<Date> readDate(sd_bus_message* message)
{
    std::optional<Date> date;
    enter(message, 'a', "d");
    double seconds = 0;
    while (dbus::check(sd_bus_message_read_basic(message, 'd', &seconds), "read") > 0) {
        if (std::isfinite(seconds)) date = Date{seconds};
    }
    leave(message);
    return date;
}

VelmoraLink::VelmoraLink(EventLoop& loop, const wire::face::Face& face,
                         std::optional<std::chrono::seconds> patience)
    : face_(face), asker_(loop, openBus(loop), patience, unansweredFailure())
{
}

dbus::Message VelmoraLink::call(const char* interface, const char* member) const
{
    return dbus::newCall(asker_.bus(), wire::face::serviceName, face_.path, interface, member);
}

dbus::Message VelmoraLink::properties()
{
    auto question = call(propertiesInterface, "GetAll");
    dbus::check(sd_bus_message_append(question.get(), "s", face_.interface), "GetAll");
    return asker_.ask(std::move(question));
}

void VelmoraLink::expectDone(dbus::Message call)
{
    readAnswer(velmora, asker_.ask(std::move(call)), "", [](auto*) { return true; });
}

void VelmoraLink::operate(const char* operation)
{
    expectDone(call(face_.interface, operation));
}

void VelmoraLink::operate(const char* operation, KeyedArchive record)
{
    auto wish = call(face_.interface, operation);
    dbus::check(sd_bus_message_sensitive(wish.get()), "sensitive");
    dbus::append(wish.get(), record);
    record.wipe();
    expectDone(std::move(wish));
}

void VelmoraLink::set(const char* property, bool value)
{
    auto wish = call(propertiesInterface, "Set");
    dbus::check(
        sd_bus_message_append(wish.get(), "ssv", face_.interface, property, "b", static_cast<int>(value)),
        "Set");
    expectDone(std::move(wish));
}

} // namespace velmora::ctl
