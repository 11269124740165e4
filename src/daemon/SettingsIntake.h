// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "charging/QuickCharge.h"
#include "link/CallerMemory.h"
#include "link/DaemonService.h"
#include "platform/LogBudget.h"
#include "state/UserSettings.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace velmora {

/// Holds the settings and takes changes of them from clients: remembers what each client said, checks values
/// and rights, announces what has changed. Main thread only.
///
/// The charger's settings are the machine's: changing them needs rights, and is logged with its author.
/// Notice switches and the low-battery limit are each user's own: changing them needs none and is not logged.
///
/// A right may take minutes to be given. What is then done is what the sender still wants, of the state as it
/// is then; a newer message of the same sender takes the place of the older one.
class SettingsIntake {
public:
    using Decided = std::function<void(const std::optional<Refusal>&)>;
    struct Ports {
        MainLoop& loop;
        Log& log;
        const Clock& clock;
        /// Decides, now or later, whether the caller may change what the charger does: with nothing where it
        /// may. A caller's older question is decided as superseded.
        std::function<void(const Caller&, std::function<void(std::optional<Refused>)>)> authorise;
        /// Drops what this connection has asked: nobody decides it any more.
        std::function<void(const std::string& busName)> withdraw;
        std::function<bool()> isPaused; ///< charging is: by a person, or because the battery is hot
        /// The charger's settings have changed from `before` by the wish of this client.
        std::function<void(const Caller&, const ChargingSettings& before)> changed;
        /// A message of this client was refused; not called for one that repeats it.
        std::function<void(const Caller&, Refused why)> refused;
        /// There is something new to be saved.
        std::function<void()> save;
        std::function<void(const KeyedArchive& settings)> announce;
        std::function<void(const std::string& busName, const KeyedArchive& settings)> announceTo;
    };

    /// `quickCharge` holds the override; it must outlive this.
    SettingsIntake(Ports ports, QuickCharge& quickCharge, const ChargingSettings& machine,
                   const UserSettings::Entries& users);

    /// The charger's settings; the override is set while quick charge is active.
    ChargingSettings machine() const;
    const UserSettings& users() const { return users_; }

    /// All settings as the client's user has them. The client knows them from then on: only what differs in
    /// its next message is its wish.
    ChargingSettings tell(const Caller& caller);

    /// All ten values. A message that changes nothing ends here. One that is not good, or whose sender may
    /// not change the charger's settings, leaves these as they are; the sender alone is told what is so.
    void take(const Caller& caller, const ChargingSettings& message);
    /// Single values: all of them or none.
    void change(const Caller& caller, SettingsChange wish, DaemonService::SettingsReply reply);

    /// Begins a quick charge before a journey, unless one is under way or charging is paused; what changes
    /// nothing needs no right. `reply` is told whether the battery is being charged for it then.
    void beginTravelCharge(const Caller& caller, DaemonService::ChargingReply reply);

    /// Asks for the right to do what `what` says; a refusal is logged.
    void authorise(const Caller& caller, const std::string& what, const Decided& decided);
    /// Logs what was changed, and by whom.
    void logChange(const Caller& caller, const std::string& what);

    /// The limit that the charger had before this daemon.
    void adoptLimit(double percent);
    /// Tells the clients in what the charger's settings differ from what they were last told.
    void announce();

    /// The last accepted message of each client, for the next run of the daemon on the same bus.
    std::vector<std::pair<std::string, ChargingSettings>> messages() const { return callers_.accepted(); }
    void restore(const std::vector<std::pair<std::string, ChargingSettings>>& messages);
    /// The connection has left.
    void forget(const std::string& busName);

private:
    ChargingSettings heldFor(uid_t user);
    SettingsChange wishOf(const Caller& caller, const ChargingSettings& message);
    SettingsMask machineChanges(const SettingsChange& wish) const;
    bool takesOver(const SettingsChange& wish) const;
    void takeOwn(const Caller& caller, const SettingsChange& wish);
    bool isPending(const Caller& caller, const ChargingSettings& message, SettingsMask fields);
    void ask(const Caller& caller, const ChargingSettings& message, const SettingsChange& wish);
    void settle(const Caller& caller, const ChargingSettings& message, const SettingsChange& wish,
                const std::optional<Refusal>& refusal);
    void withdraw(const Caller& caller);
    void accept(const Caller& caller, const SettingsChange& wish);
    void refuse(const Caller& caller, const ChargingSettings& message, Refused why);
    void correct(const Caller& caller);

    Lifetime lifetime_;
    Ports ports_;
    QuickCharge& quickCharge_;
    ChargingSettings machine_; ///< without the override, and without what is a user's
    UserSettings users_;
    CallerMemory callers_;
    ChargingSettings announced_;
    LogBudget refusals_;
    std::map<uid_t, LogBudget> changes_; ///< of each author, who all had the right
};

} // namespace velmora
