// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/Callers.h"
#include "platform/Complaints.h"
#include "wire/VelmoraProtocol.h"

#include <functional>
#include <string>
#include <system_error>
#include <vector>

namespace velmora {

/// What all interfaces of the daemon have in common towards those who use them: it knows who calls, keeps
/// answers until there is something worth telling, and sends signals to all or to one. Never waits for the
/// bus. Main thread only.
class Clients {
public:
    /// Answers that are kept before `serve`; those past it are given at once.
    static constexpr std::size_t maximumWaiting = 64;

    struct Signal {
        const char* interface;
        std::string member;
        const char* path = wire::objectPath;
    };
    using Fill = std::function<void(sd_bus_message* signal)>;

    /// All must outlive the object.
    Clients(sd_bus* bus, DaemonService& service, Log& log);

    /// Runs `task`, now or later, with the caller who sent `call`: see Callers.
    void identify(sd_bus_message* call, Callers::Task task) { callers_.identify(call, std::move(task)); }

    /// Calls `answer` once there is something worth telling. Returns what sd-bus expects of a method that is
    /// served.
    int answerFresh(std::function<void()> answer);
    /// The service's state is worth telling from now on, also to those who have waited for it.
    void serve();

    /// Sends a signal that `fill` completes, to every client that listens or to the connection `to` alone.
    /// `action` names this in the log: see `attempt`.
    void send(const std::string& action, const Signal& signal, const Fill& fill, const std::string& to = {});

    /// Calls `act`. Where the bus refuses, the log says that `action` could not be done.
    template <typename Act>
    void attempt(const std::string& action, Act&& act)
    try {
        act();
    } catch (const std::system_error& failure) {
        complaints_.raise(action, "Could not " + action + ": " + failure.what() + ".");
    }

private:
    sd_bus* bus_;
    DaemonService& service_;
    Complaints complaints_;
    Callers callers_;
    bool isServing_ = false;
    std::vector<std::function<void()>> waiting_; ///< answers, until `serve`
};

} // namespace velmora
