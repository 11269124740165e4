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
/// nothing has to be remembered of it. It counts as taken over once the daemon holds all of its values; that
/// is a line in the log, with who has given it.
///
/// The owner at the machine wins: once the daemon has taken over a person's change here, made while a command
/// was fresh, the command is written anew with the values of this machine. Until then it is passed over. A
/// change that the daemon refuses leaves the command in force. Main thread only.
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
    bool isFresh() const;
    bool isOwn() const;
    bool isOverruled() const;
    bool isHeld() const;
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
    std::optional<Date> applied_;     ///< the command, by when it was given; so are the next three
    std::optional<Date> taken_;
    std::optional<Date> warnedOf_;
    std::optional<Date> overruled_;
    Date lastDeed_; ///< of a person's that overruled a command
    // What a person has changed and the daemon has not told yet.
    SettingsMask wishedFields_;
    ChargingSettings wished_;
    bool isDaemonThere_ = false;
    std::optional<ChargingSettings> held_; ///< by the daemon, when it last told
};

} // namespace velmora
