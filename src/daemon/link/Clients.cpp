// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/Clients.h"

#include <utility>

namespace velmora {

Clients::Clients(sd_bus* bus, DaemonService& service, Log& log)
    : bus_(bus),
      service_(service),
      complaints_(log, "DaemonObject"),
      callers_(bus, log, [this](const std::string& name) { service_.callerLeft(name); })
{
}

int Clients::answerFresh(std::function<void()> answer)
{
    if (isServing_)
        service_.ask(std::move(answer));
    else if (waiting_.size() < maximumWaiting)
        waiting_.push_back(std::move(answer));
    else
        answer();
    return 1;
}

void Clients::serve()
{
    isServing_ = true;
    for (const auto& answer : std::exchange(waiting_, {})) answer();
}

void Clients::send(const std::string& action, const Signal& signal, const Fill& fill, const std::string& to)
{
    attempt(to.empty() ? action : action + " to one client", [&] {
        const auto& [interface, member, path] = signal;
        dbus::Message made;
        dbus::check(sd_bus_message_new_signal(bus_, out(made), path, interface, member.c_str()), interface);
        fill(made.get());
        if (!to.empty()) dbus::check(sd_bus_message_set_destination(made.get(), to.c_str()), "address");
        dbus::send(made);
    });
}

} // namespace velmora
