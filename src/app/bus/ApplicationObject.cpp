// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/ApplicationObject.h"

#include "bus/Records.h"
#include "wire/ModelFace.h"

#include <array>
#include <string_view>

namespace velmora {

namespace {

template <int (ApplicationObject::*Method)(sd_bus_message*)>
constexpr sd_bus_message_handler_t served = dbus::serve<ApplicationObject, Method>;

} // namespace

ApplicationObject::ApplicationObject(sd_bus* bus)
{
    // All callers on a session bus are this user's; asking the bus for the sender would block.
    constexpr auto anyone = SD_BUS_VTABLE_UNPRIVILEGED;
    static const std::array table{
        sd_bus_vtable SD_BUS_VTABLE_START(0),
        sd_bus_vtable SD_BUS_METHOD_WITH_ARGS("Activate", SD_BUS_ARGS("a{sv}", platform_data),
                                              SD_BUS_NO_RESULT, served<&ApplicationObject::activate>, anyone),
        sd_bus_vtable SD_BUS_METHOD_WITH_ARGS("Open", SD_BUS_ARGS("as", uris, "a{sv}", platform_data),
                                              SD_BUS_NO_RESULT, served<&ApplicationObject::open>, anyone),
        sd_bus_vtable SD_BUS_METHOD_WITH_ARGS(
            "ActivateAction", SD_BUS_ARGS("s", action_name, "av", parameter, "a{sv}", platform_data),
            SD_BUS_NO_RESULT, served<&ApplicationObject::activateAction>, anyone),
        sd_bus_vtable SD_BUS_VTABLE_END,
    };
    dbus::check(sd_bus_add_object_vtable(bus, out(object_), wire::face::objectPath,
                                         "org.freedesktop.Application", table.data(), this),
                "org.freedesktop.Application");
}

/// The `a{sv}` at hand holds the token under one of two names.
std::string ApplicationObject::token(sd_bus_message* call)
{
    const auto data = dbus::readArchive(call);
    return data.decodeText("activation-token", data.decodeText("desktop-startup-id", ""));
}

int ApplicationObject::activate(sd_bus_message* call)
{
    const auto given = token(call);
    if (const auto handler = onActivate) handler(given);
    return sd_bus_reply_method_return(call, nullptr);
}

/// Velmora opens no files: a request to do so counts as another start.
int ApplicationObject::open(sd_bus_message* call)
{
    dbus::check(sd_bus_message_skip(call, "as"), "skip the files");
    return activate(call);
}

int ApplicationObject::activateAction(sd_bus_message* call)
{
    const char* name = nullptr;
    dbus::check(sd_bus_message_read_basic(call, 's', &name), "read an action");
    const std::string_view action = name;
    dbus::check(sd_bus_message_skip(call, "av"), "skip the parameters");
    const auto given = token(call);
    const auto answer = [&](const auto& handler, const auto&... arguments) {
        if (const auto kept = handler) kept(arguments...);
        return sd_bus_reply_method_return(call, nullptr);
    };
    if (const auto* window = wire::face::windowOf(action)) return answer(onWindow, window, given);
    if (action == wire::face::quitAction) return answer(onQuit);
    return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "there is no such action");
}

} // namespace velmora
