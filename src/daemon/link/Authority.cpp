// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/Authority.h"

#include <system_error>
#include <utility>

namespace velmora {

namespace {

constexpr auto polkitName = "org.freedesktop.PolicyKit1";
constexpr auto polkitPath = "/org/freedesktop/PolicyKit1/Authority";
constexpr auto polkitInterface = "org.freedesktop.PolicyKit1.Authority";

constexpr auto forever = UINT64_MAX; // a password may take a person minutes
constexpr std::uint32_t allowInteraction = 1;

} // namespace

void Authority::ask(const Caller& caller, Decided decided)
{
    const auto older = questions_.extract(caller.busName);
    if (older) cancel(older.mapped().id);
    const auto id = "velmora-" + std::to_string(++count_);
    auto& question =
        questions_.try_emplace(caller.busName, Question{*this, caller.busName, id, std::move(decided), {}})
            .first->second;
    try {
        question.slot = dbus::ask(bus_, callAbout(caller, id), dbus::serve<Question, &Question::answered>,
                                  &question, forever);
    } catch (const std::system_error& failure) {
        const auto lost = questions_.extract(caller.busName);
        lost.mapped().decided(unavailable(failure.what()));
    }
    if (older) older.mapped().decided(Refused::superseded);
}

dbus::Message Authority::callAbout(const Caller& caller, const std::string& id) const
{
    auto call = dbus::newCall(bus_, polkitName, polkitPath, polkitInterface, "CheckAuthorization");
    dbus::check(sd_bus_message_set_auto_start(call.get(), true),
                "start polkit"); // it sleeps where nobody needs it
    dbus::check(sd_bus_message_append(call.get(), "(sa{sv})sa{ss}us", "system-bus-name", 1, "name", "s",
                                      caller.busName.c_str(), action, 0,
                                      caller.mayInteract ? allowInteraction : 0, id.c_str()),
                "ask polkit");
    return call;
}

void Authority::forget(const std::string& busName)
{
    if (const auto gone = questions_.extract(busName)) cancel(gone.mapped().id);
}

/// Takes the password's window away. The answer is not waited for.
void Authority::cancel(const std::string& id) const
try {
    const auto call =
        dbus::newCall(bus_, polkitName, polkitPath, polkitInterface, "CancelCheckAuthorization");
    dbus::check(sd_bus_message_append(call.get(), "s", id.c_str()), "cancel a question");
    dbus::check(sd_bus_message_set_expect_reply(call.get(), false), "cancel a question");
    dbus::send(call);
} catch (const std::system_error&) {
    // The bus is lost, and every question with it.
}

int Authority::Question::answered(sd_bus_message* reply)
{
    const auto spent = authority.questions_.extract(busName); // with `this`, at the end of this function
    spent.mapped().decided(spent.mapped().authority.verdict(reply));
    return 0;
}

std::optional<Refused> Authority::verdict(sd_bus_message* reply)
try {
    if (const auto* error = sd_bus_message_get_error(reply)) return unavailable(dbus::textOf(*error));
    int isAllowed = 0;
    int isChallenge = 0;
    dbus::check(sd_bus_message_enter_container(reply, 'r', "bba{ss}"), "its answer is of another type");
    dbus::check(sd_bus_message_read(reply, "bb", &isAllowed, &isChallenge), "its answer cannot be read");
    complaints_.settle(polkitName);
    if (isAllowed) return std::nullopt;
    return isChallenge ? Refused::needsPassword : Refused::denied;
} catch (const std::system_error& failure) {
    return unavailable(failure.what());
}

Refused Authority::unavailable(const std::string& why)
{
    complaints_.raise(polkitName, "Could not ask polkit who may change settings: " + why +
                                      "; only root may until it answers.");
    return Refused::unavailable;
}

} // namespace velmora
