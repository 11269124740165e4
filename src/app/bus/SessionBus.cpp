// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/SessionBus.h"

#include "wire/ModelFace.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <system_error>

namespace velmora {

namespace {

constexpr auto category = "SessionBus";
constexpr std::chrono::seconds startPatience{3};
constexpr std::uint64_t patience = 5'000'000; // microseconds, for an answer
constexpr auto applicationInterface = "org.freedesktop.Application";

/// Given by a desktop to a program that it starts at a click, so that its window may take the focus.
std::string activationToken()
{
    const char* token = std::getenv("XDG_ACTIVATION_TOKEN");
    return token ? token : "";
}

} // namespace

SessionBus::SessionBus(EventLoop& loop, Log& log) : log_(log)
{
    try {
        connect(loop);
    } catch (const std::system_error& failure) {
        naming_.reset();
        disconnection_.reset();
        bus_.reset();
        role_ = Role::noBus;
        log_.warning(category, std::string("Cannot use the session bus: ") + failure.what() +
                                   "; running without windows and without a StatusNotifierItem.");
    }
}

/// Not by a blocking call: sd-bus's own would block for ever on a bus that accepts connections and never
/// answers, and would let no signal through.
void SessionBus::connect(EventLoop& loop)
{
    bus_ = dbus::openSessionBus(loop);
    dbus::shedFloods(bus_.get());
    disconnection_ =
        dbus::onDisconnected(bus_.get(), dbus::serve<SessionBus, &SessionBus::disconnected>, this);
    dbus::check(sd_bus_request_name_async(bus_.get(), out(naming_), wire::face::serviceName, 0,
                                          dbus::serve<SessionBus, &SessionBus::named>, this),
                "cannot ask the session bus for a name");
    const auto deadline = std::chrono::steady_clock::now() + startPatience;
    while (!isNamed_ && !loop.isOver()) {
        const auto left = deadline - std::chrono::steady_clock::now();
        if (left <= left.zero()) dbus::check(-ETIMEDOUT, "the session bus does not answer");
        loop.runOnce(std::chrono::ceil<std::chrono::milliseconds>(left));
    }
    if (role_ == Role::noBus) dbus::check(-ECONNREFUSED, "the session bus gives no name");
}

int SessionBus::named(sd_bus_message* reply)
{
    constexpr std::uint32_t isOwner = 1, exists = 3;
    std::uint32_t outcome = 0;
    isNamed_ = true;
    if (sd_bus_message_is_method_error(reply, nullptr) || sd_bus_message_read(reply, "u", &outcome) < 0)
        return 0;
    if (outcome == isOwner) role_ = Role::primary;
    if (outcome == exists) role_ = Role::secondary;
    return 0;
}

bool SessionBus::forward(const char* action)
{
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(bus_.get(), &made, wire::face::serviceName, wire::face::objectPath,
                                       applicationInterface, action ? "ActivateAction" : "Activate") < 0)
        return false;
    const dbus::Message call(made);
    if (action) dbus::check(sd_bus_message_append(made, "sav", action, 0), "append");
    const auto token = activationToken();
    dbus::check(
        sd_bus_message_append(made, "a{sv}", token.empty() ? 0 : 1, "activation-token", "s", token.c_str()),
        "append");
    sd_bus_error error{};
    const int answered = sd_bus_call(bus_.get(), made, patience, &error, nullptr);
    if (answered < 0)
        log_.error(category, std::string("The running instance of Velmora does not answer: ") +
                                 (error.message ? error.message : "no reason given") + ".");
    sd_bus_error_free(&error);
    return answered >= 0;
}

int SessionBus::disconnected(sd_bus_message*)
{
    isNamed_ = true; // as far as it ever will be
    log_.info(category, "The session bus closed the connection; quitting.");
    if (const auto handler = onLost) handler();
    return 0;
}

} // namespace velmora
