// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "bus/DBus.h"
#include "link/Failure.h"

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace velmora::ctl {

/// A connection of a program that asks, prints and ends: it waits for each answer.
class Asker {
public:
    using Calls = std::vector<dbus::Message>;

    /// How long reading waits.
    static constexpr std::chrono::seconds readPatience{5};

    /// `patience` is for an answer of any kind, in place of those that are given with the question;
    /// `unanswered` is thrown where the wait was in vain.
    Asker(EventLoop& loop, dbus::Bus bus, std::optional<std::chrono::seconds> patience, Failure unanswered);

    /// The answers in the order of the calls; errors among them. Throws where one is missing, as a Failure.
    std::vector<dbus::Message> ask(const Calls& calls, std::chrono::seconds patience);
    dbus::Message ask(dbus::Message call, std::chrono::seconds patience = readPatience);
    /// Waits for this one answer as long as it takes, and calls `meanwhile` every few seconds.
    dbus::Message askForever(const dbus::Message& call, const std::function<void()>& meanwhile);

    /// Serves the connection until then; whether that is so before the deadline.
    bool serveUntil(std::chrono::steady_clock::time_point deadline, const std::function<bool()>& isDone);

    std::optional<std::chrono::seconds> patience() const { return patience_; }
    sd_bus* bus() const { return bus_.get(); }

private:
    EventLoop& loop_;
    std::optional<std::chrono::seconds> patience_;
    Failure unanswered_;
    dbus::Bus bus_;
};

} // namespace velmora::ctl
