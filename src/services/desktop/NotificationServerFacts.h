// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "bus/NameOwner.h"
#include "platform/NotificationCenter.h"

#include <functional>
#include <vector>

namespace velmora {

/// Which notification server there is, whether it keeps notices to itself, and who waits for one. Starts no
/// server. Loop's thread only; never blocks.
class NotificationServerFacts {
public:
    /// `changed` is called whenever `now` tells something else. All must outlive this.
    NotificationServerFacts(sd_bus* bus, const NameOwner& owner, std::function<void()> changed);
    NotificationServerFacts(const NotificationServerFacts&) = delete;
    NotificationServerFacts& operator=(const NotificationServerFacts&) = delete;

    /// Another server has the name.
    void appeared();
    /// None has it.
    void gone();

    const NotificationServer& now() const { return now_; }

    /// Answers once there is a server, or one that the bus starts with the first notice.
    void whenThere(NotificationCenter::Authorization answered);

private:
    int informed(sd_bus_message* reply);
    int listed(sd_bus_message* reply);
    int told(sd_bus_message* reply);
    int changed(sd_bus_message* signal);
    void askWhetherStartable();
    void become(const NotificationServer& next);
    void answerAll();

    sd_bus* bus_;
    const NameOwner& owner_;
    std::function<void()> changed_;
    NotificationServer now_;
    std::vector<NotificationCenter::Authorization> waiting_;
    dbus::Slot information_, startable_, changes_;
    std::vector<dbus::Slot> inhibitions_;
};

} // namespace velmora
