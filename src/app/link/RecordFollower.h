// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "bus/NameOwner.h"
#include "platform/Complaints.h"
#include "platform/MainLoop.h"
#include "wire/KeyedArchive.h"

#include <functional>
#include <optional>
#include <string>

namespace velmora {

/// Follows a record that the daemon keeps: asks for it once, then takes over what a signal says has changed.
/// Never waits, starts no daemon. A daemon that refuses to answer is asked again after a while. Loop's thread
/// only.
class RecordFollower {
public:
    /// Where the record comes from, all on the daemon's object.
    struct Source {
        const char* name; ///< for the log, as in "Could not read the charger's properties"
        const char* interface;
        const char* method;       ///< answers with the whole record
        const char* signal;       ///< carries the values that have changed
        const char* of = nullptr; ///< a text that the method takes and the signal has first; null for none
    };

    /// `daemon` says whose signals count. All must outlive the follower. Throws std::system_error where the
    /// connection is gone.
    RecordFollower(MainLoop& loop, sd_bus* bus, const NameOwner& daemon, Complaints& complaints,
                   const Source& source);
    RecordFollower(const RecordFollower&) = delete;
    RecordFollower& operator=(const RecordFollower&) = delete;

    /// Nothing while there is no daemon, or before it has answered.
    const std::optional<KeyedArchive>& record() const { return record_; }
    enum class Told {
        inAnswer, ///< to this connection alone: it has asked, or sent what was not followed
        toAll,
    };
    /// Called when the record has changed: `news` is the whole record at first, later the changed values.
    /// The handler may destroy the follower.
    std::function<void(const KeyedArchive& news, Told told)> onChange;

    /// Asks a daemon that may have appeared. What was known of the one before counts no more.
    void fetch();
    /// The daemon is gone: clears the record; does not call `onChange`.
    void forget();

private:
    int answered(sd_bus_message* reply);
    int changed(sd_bus_message* signal);
    std::optional<KeyedArchive> read(sd_bus_message* message);
    void complain(const std::string& why);
    void set(KeyedArchive record, const KeyedArchive& news, Told told);

    MainLoop& loop_;
    sd_bus* bus_;
    const NameOwner& daemon_;
    Complaints& complaints_;
    Source source_;
    std::string action_; ///< "read the charger's properties"
    std::optional<KeyedArchive> record_;
    dbus::Slot changes_;
    dbus::Slot question_;
    MainLoop::Timer retry_;
};

} // namespace velmora
