// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/NotificationServerFacts.h"

#include "bus/Records.h"
#include "desktop/NotificationMessages.h"

#include <array>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

namespace velmora {

namespace {

constexpr std::uint64_t forEver = UINT64_MAX; ///< a server that hangs is there once it answers
constexpr auto properties = "org.freedesktop.DBus.Properties";
constexpr std::size_t maximumNameBytes = 128;

/// How servers say that they keep notices to themselves: Plasma by the one, dunst by the other.
constexpr std::array<std::pair<const char*, const char*>, 2> inhibitions{{
    {notifications::serviceName, "Inhibited"},
    {"org.dunstproject.cmd0", "paused"},
}};

} // namespace

NotificationServerFacts::NotificationServerFacts(sd_bus* bus, const NameOwner& owner,
                                                 std::function<void()> changed)
    : bus_(bus),
      owner_(owner),
      changed_(std::move(changed)),
      changes_(dbus::match(bus,
                           {.sender = notifications::serviceName,
                            .path = notifications::objectPath,
                            .interface = properties,
                            .member = "PropertiesChanged"},
                           dbus::serve<NotificationServerFacts, &NotificationServerFacts::changed>, this))
{
    appeared(); // perhaps; if not, the answer is an error
}

void NotificationServerFacts::appeared()
{
    information_ =
        dbus::ask(bus_, notifications::newCall(bus_, notifications::serviceName, "GetServerInformation"),
                  dbus::serve<NotificationServerFacts, &NotificationServerFacts::informed>, this, forEver);
    inhibitions_.clear();
    now_.isInhibited.reset();
    for (const auto& [interface, property] : inhibitions) {
        const auto question =
            dbus::newCall(bus_, notifications::serviceName, notifications::objectPath, properties, "Get");
        dbus::check(sd_bus_message_append(question.get(), "ss", interface, property), "Get");
        inhibitions_.push_back(dbus::ask(bus_, question,
                                         dbus::serve<NotificationServerFacts, &NotificationServerFacts::told>,
                                         this, forEver));
    }
}

void NotificationServerFacts::gone()
{
    information_.reset();
    inhibitions_.clear();
    become({});
    askWhetherStartable();
}

/// A server that answers nonsense is one all the same: notices go there.
int NotificationServerFacts::informed(sd_bus_message* reply)
{
    if (!owner_.sent(reply)) return 0;
    const char* name = nullptr;
    auto next = now_;
    next.name.clear();
    if (!sd_bus_message_is_method_error(reply, nullptr) && sd_bus_message_read(reply, "s", &name) > 0)
        next.name = notifications::shownText(name, maximumNameBytes);
    if (next.name.empty()) next.name = notifications::serviceName;
    become(next);
    answerAll();
    return 0;
}

int NotificationServerFacts::told(sd_bus_message* reply)
{
    int isInhibited = 0;
    if (!owner_.sent(reply) || sd_bus_message_is_method_error(reply, nullptr) ||
        sd_bus_message_read(reply, "v", "b", &isInhibited) <= 0)
        return 0;
    auto next = now_;
    next.isInhibited = isInhibited != 0;
    become(next);
    return 0;
}

int NotificationServerFacts::changed(sd_bus_message* signal)
{
    const char* changedInterface = nullptr;
    if (!owner_.sent(signal) || sd_bus_message_read(signal, "s", &changedInterface) <= 0) return 0;
    for (const auto& [interface, property] : inhibitions) {
        if (changedInterface != std::string_view(interface)) continue;
        const auto values = dbus::readArchive(signal);
        const auto* value = values.find(property);
        const auto* isInhibited = value ? std::get_if<bool>(value) : nullptr;
        auto next = now_;
        if (isInhibited) next.isInhibited = *isInhibited;
        become(next);
        break;
    }
    return 0;
}

void NotificationServerFacts::whenThere(NotificationCenter::Authorization answered)
{
    waiting_.push_back(std::move(answered));
    if (owner_.exists() && !now_.name.empty()) return answerAll();
    try {
        if (!owner_.exists()) askWhetherStartable();
    } catch (const std::system_error&) {
        // The connection is gone, and the session with it.
    }
}

void NotificationServerFacts::askWhetherStartable()
{
    const auto question =
        dbus::newCall(bus_, dbus::busName, dbus::busPath, dbus::busName, "ListActivatableNames");
    startable_ = dbus::ask(bus_, question,
                           dbus::serve<NotificationServerFacts, &NotificationServerFacts::listed>, this);
}

int NotificationServerFacts::listed(sd_bus_message* reply)
{
    const char* name = nullptr;
    bool isListed = false;
    if (sd_bus_message_is_method_error(reply, nullptr) ||
        sd_bus_message_enter_container(reply, 'a', "s") <= 0)
        return 0;
    while (sd_bus_message_read(reply, "s", &name) > 0)
        isListed = isListed || name == std::string_view(notifications::serviceName);
    if (owner_.exists()) return 0;
    become({.isStartable = isListed});
    if (isListed) answerAll();
    return 0;
}

void NotificationServerFacts::become(const NotificationServer& next)
{
    if (now_ == next) return;
    now_ = next;
    changed_();
}

void NotificationServerFacts::answerAll()
{
    for (const auto& answered : std::exchange(waiting_, {})) answered(true, std::nullopt);
}

} // namespace velmora
