// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "link/DaemonService.h"
#include "platform/Complaints.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace velmora {

/// Asks polkit whether a caller may change what the charger does. Whether a person is asked for a password
/// meanwhile is the caller's choice alone; that may take as long as the person does, and holds up nobody
/// else.
///
/// Of each caller at most one question is pending: a newer one takes the place of the older. Without an
/// answer of polkit nobody is allowed anything, and one line in the log says so. Main thread only.
class Authority {
public:
    /// Called once: with nothing where the caller may, else with why not.
    using Decided = std::function<void(std::optional<Refused>)>;

    static constexpr auto action = "app.velmora.daemon.change-settings";

    /// Both must outlive the object.
    Authority(sd_bus* bus, Log& log) : bus_(bus), complaints_(log, "Authority") {}
    Authority(const Authority&) = delete;
    Authority& operator=(const Authority&) = delete;

    /// An older question of the caller is decided as superseded.
    void ask(const Caller& caller, Decided decided);
    /// Drops the question of that connection, if there is one: it is decided no more.
    void forget(const std::string& busName);

private:
    struct Question {
        Authority& authority;
        std::string busName;
        std::string id; ///< by which it can be cancelled
        Decided decided;
        dbus::Slot slot;

        int answered(sd_bus_message* reply);
    };

    dbus::Message callAbout(const Caller& caller, const std::string& id) const;
    void cancel(const std::string& id) const;
    std::optional<Refused> verdict(sd_bus_message* reply);
    Refused unavailable(const std::string& why);

    sd_bus* bus_;
    Complaints complaints_;
    std::map<std::string, Question> questions_; ///< by the caller's name
    std::uint64_t count_ = 0;
};

} // namespace velmora
