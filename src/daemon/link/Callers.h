// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "link/DaemonService.h"
#include "platform/Complaints.h"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace velmora {

/// Knows which user stands behind a connection to the bus. The bus is asked once for each connection that
/// sends something, and not waited for; what a connection has sent meanwhile is kept, in order.
///
/// The bus can only tell of those who are there: the message of a program that sent it without expecting a
/// reply and left at once has no known sender any more, and is dropped with a log line.
class Callers {
public:
    using Task = std::function<void(const Caller&)>;
    using Left = std::function<void(const std::string& busName)>;

    static constexpr std::size_t maximumWaiting = 32; ///< messages of one caller; past it the oldest goes
    /// The bus grants one user 256 connections and us 512 matches, of which each caller takes one.
    static constexpr std::size_t maximumCallers = 480;

    /// `left` is called when one who was identified has left the bus.
    Callers(sd_bus* bus, Log& log, Left left);

    /// Runs `task`, now or later, with the caller who sent `call`. Otherwise `call` is answered with an
    /// error.
    void identify(sd_bus_message* call, Task task);

private:
    struct Waiting {
        std::shared_ptr<sd_bus_message> call;
        Task task;
    };

    struct Known {
        Callers& callers;
        std::string busName;
        std::optional<uid_t> uid;
        std::deque<Waiting> waiting; ///< until `uid` is known
        dbus::Slot departure;        ///< signal that the connection left
        dbus::Slot question;         ///< for `uid`

        int answered(sd_bus_message* reply);
        int changedOwner(sd_bus_message* signal);
    };

    Known* known(const std::string& busName);
    void ask(Known& caller);
    void wait(Known& caller, Waiting message);
    void forget(Known& caller);
    void refuse(sd_bus_message* call, const char* error, const char* reason);

    sd_bus* bus_;
    Complaints complaints_;
    Left left_;
    std::map<std::string, Known> callers_;
};

} // namespace velmora
