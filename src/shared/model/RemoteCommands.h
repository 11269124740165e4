// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "fleet/CloudKitManager.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "wire/ChargingSettings.h"

#include <memory>
#include <optional>

namespace velmora {

class BatteryModel;

/// The command that another of the user's machines has written into this machine's record, and what the
/// others may know of the settings here.
///
/// A command is applied while it is fresh, at each reading anew: only what differs is assigned, so that
/// nothing has to be remembered of it. A limit out of range is no part of it. It counts as taken over once
/// the daemon holds all of its values; that is a line in the log, with who has given it. One that it has not
/// taken over by the next reading shows that commands are refused here, and the others are told so until a
/// change of settings succeeds or the daemon comes anew.
///
/// The owner at the machine wins: a person's change here overrules every command that was given before it, by
/// its sender's clock, or that was known, also one that is read later. Such a command is passed over, and
/// written anew with the values of this machine once the daemon has taken the change over. A change that the
/// daemon refuses overrules nothing. Main thread only.
class RemoteCommands {
public:
    static constexpr double freshness = 300; ///< seconds for which a command counts

    explicit RemoteCommands(BatteryModel& model);

    /// As long as they are not accepted, nothing is applied.
    void accept(bool isAccepting) { isAccepting_ = isAccepting; }

    /// Another store: what the record in the one before said counts no more.
    void forget();
    /// This machine's record as it was just read; nothing where there is none, or it could not be read.
    void read(const std::optional<DeviceReport>& own);
    /// Applies the command of the last reading, once, and sends it to the daemon at once.
    void apply();

    /// A person has given these settings the values that they have in `values`, here and now.
    void changedByPerson(SettingsMask fields, const ChargingSettings& values);

    void settingsTold(const SettingsTold& told);
    void daemonGone() { isDaemonThere_ = false; }
    /// Looks what has become of a person's change and of the command, by what the daemon has told.
    void settle();

    /// What is in force here, by the daemon's word; nothing while that is not known.
    std::optional<SettingsInForce> inForce() const;

private:
    /// A person's change here.
    struct Deed {
        Date at;
        std::optional<Date> command; ///< that was fresh then: by another clock, it may have been given later
    };

    void remember(SettingsMask fields, const ChargingSettings& values);
    bool isFresh() const;
    bool isWrittenHere() const;
    bool isOverruled() const;
    bool isOverruledBy(const std::optional<Deed>& deed) const;
    bool isHeld() const;
    void rewrite();
    void noteTaken();
    void warnIfNotTaken();
    std::string described() const;

    BatteryModel& model_;
    CloudKitManager& manager_;
    std::shared_ptr<Clock> clock_;
    std::shared_ptr<Log> log_;

    bool isAccepting_ = true;
    std::optional<DeviceReport> own_; ///< the last one that was read
    bool isUnapplied_ = false;        ///< since that
    std::optional<Date> applied_;     ///< the command, by when it was given; so are the next two
    std::optional<Date> taken_;
    std::optional<Date> warnedOf_;
    bool isRefused_ = false;    ///< the daemon does not let this user's commands through
    std::optional<Deed> deed_;  ///< the last one that the daemon has taken over
    bool isRewriteDue_ = false; ///< once for each reading and deed
    std::optional<Deed> wish_;  ///< the last one while the daemon has not told of it
    bool isOwnWish_ = false;    ///< made through this program
    SettingsMask wishedFields_; ///< by that, and what they are to be
    ChargingSettings wished_;
    bool isDaemonThere_ = false;
    std::optional<ChargingSettings> held_; ///< by the daemon, when it last told
};

} // namespace velmora
