// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/NotificationMessages.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "base/Utf8.h"

#include <string_view>

namespace velmora::notifications {

namespace {

constexpr std::size_t maximumActionBytes = 64;
constexpr std::int32_t untilTheServerDecides = -1;

std::string escaped(std::string_view text)
{
    std::string result;
    for (const char one : text) {
        if (one == '&')
            result += "&amp;";
        else if (one == '<')
            result += "&lt;";
        else if (one == '>')
            result += "&gt;";
        else
            result += one;
    }
    return result;
}

std::uint8_t urgencyOf(InterruptionLevel level)
{
    constexpr std::uint8_t low = 0, normal = 1, critical = 2;
    if (level == InterruptionLevel::passive) return low;
    return level == InterruptionLevel::critical ? critical : normal;
}

void appendActions(sd_bus_message* call, const NotificationRequest& request, bool hasActions)
{
    dbus::check(sd_bus_message_open_container(call, 'a', "s"), "Notify");
    const auto append = [call](const std::string& identifier, const std::string& title) {
        dbus::check(sd_bus_message_append(call, "ss", shownText(identifier, maximumActionBytes).c_str(),
                                          shownText(title, maximumActionBytes).c_str()),
                    "Notify");
    };
    if (hasActions) {
        append(NotificationResponse::click, tr("Open Velmora"));
        for (const auto& action : request.actions) append(action.identifier, action.title);
    }
    dbus::check(sd_bus_message_close_container(call), "Notify");
}

void appendHints(sd_bus_message* call, const Sender& sender, const NotificationRequest& request)
{
    dbus::check(sd_bus_message_open_container(call, 'a', "{sv}"), "Notify");
    dbus::check(sd_bus_message_append(call, "{sv}", "desktop-entry", "s", sender.desktopEntry.c_str()),
                "Notify");
    if (request.hasDefaultSound)
        dbus::check(sd_bus_message_append(call, "{sv}", "sound-name", "s", "message-new-instant"), "Notify");
    if (request.interruptionLevel)
        dbus::check(
            sd_bus_message_append(call, "{sv}", "urgency", "y", urgencyOf(*request.interruptionLevel)),
            "Notify");
    dbus::check(sd_bus_message_close_container(call), "Notify");
}

} // namespace

Capabilities readCapabilities(sd_bus_message* reply)
{
    Capabilities found;
    const char* one = nullptr;
    if (sd_bus_message_enter_container(reply, 'a', "s") <= 0) return found;
    while (sd_bus_message_read(reply, "s", &one) > 0) {
        if (one == std::string_view("body-markup")) found.readsMarkup = true;
        if (one == std::string_view("actions")) found.hasActions = true;
    }
    return found;
}

dbus::Message newCall(sd_bus* bus, const std::string& server, const char* member)
{
    return dbus::newCall(bus, server, objectPath, serviceName, member);
}

dbus::Message newNotify(sd_bus* bus, const std::string& server, const Sender& sender,
                        const NotificationRequest& request, const Capabilities& capabilities,
                        std::uint32_t replaced)
{
    const auto title = shownText(request.title, maximumTitleBytes);
    const auto plain = shownText(request.body, maximumBodyBytes);
    const auto body = capabilities.readsMarkup ? escaped(plain) : plain;
    auto call = newCall(bus, server, "Notify");
    dbus::check(sd_bus_message_append(call.get(), "susss", sender.name.c_str(), replaced,
                                      sender.desktopEntry.c_str(), title.c_str(), body.c_str()),
                "Notify");
    appendActions(call.get(), request, capabilities.hasActions);
    appendHints(call.get(), sender, request);
    dbus::check(sd_bus_message_append(call.get(), "i", untilTheServerDecides), "Notify");
    return call;
}

std::string shownText(std::string_view text, std::size_t bytes)
{
    // Cut first, so that a huge text costs little; a character cut in two becomes question marks.
    const auto clean = cleanUtf8(text.substr(0, 4 * bytes));
    const auto line = printable(clean);
    return std::string(utf8Prefix(line, bytes));
}

} // namespace velmora::notifications
