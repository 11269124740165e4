// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "base/Observable.h"
#include "fleet/DeviceReport.h"
#include "platform/Clock.h"
#include "platform/CloudDatabase.h"
#include "platform/Log.h"
#include "platform/MainLoop.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velmora {

/// Publishes this machine's state as a record of the user's private store, reads those of the user's other
/// machines, and writes commands into them. It owns the records' format: see DeviceReport.
///
/// Without a database nothing is sent, and what is asked for is answered at once, with nothing. A failure is
/// a line in the log, once until it is over, and never more than that. Main thread only; completions come
/// there too. Those that wait when the database is exchanged are dropped.
class CloudKitManager {
    Lifetime lifetime_;

public:
    using State = std::optional<SharedBatteryState>;

    static CloudKitManager& shared();

    CloudKitManager();
    CloudKitManager(const CloudKitManager&) = delete;
    CloudKitManager& operator=(const CloudKitManager&) = delete;

    static constexpr bool isCloudKitEnabled = true;

    Observable<std::optional<Date>> lastSyncDate{std::nullopt}; ///< of the last upload that was stored
    Observable<bool> isSyncing{false};                          ///< an upload is under way
    Observable<bool> hasDatabase{false};
    /// All devices of the last listing, with what SharedBatteryState has no place for; empty where it failed.
    Observable<std::vector<DeviceReport>> devices{{}};
    Observable<std::optional<Date>> lastListDate{std::nullopt}; ///< of the answer to the last listing
    /// What was wrong with the last answer of the store.
    Observable<RecordFault> lastFault{RecordFault::none};

    /// From now on records live in `database`; null: nowhere. What is under way in the one before is dropped.
    void useDatabase(std::shared_ptr<CloudDatabase> database, std::string currentDeviceID);

    /// Removes this machine's record, and uses the database no more: nothing is sent after the removal.
    /// `completion` is told whether the record is gone, whatever is used meanwhile.
    void leave(std::function<void(bool isGone)> completion);

    /// This machine's; empty before there was a database.
    const std::string& currentDeviceID() const { return currentDeviceID_; }
    /// What this machine is called.
    const std::string& deviceName() const { return deviceName_; }

    /// Uploads this machine's state. Dropped while an upload is under way.
    void syncState(double percentage, bool isCharging, std::string thermalState);

    /// Writes a command into the record of `targetDeviceID`, or of this machine: the limit in percent, the
    /// recommended mode, and storage mode where it is given. What becomes of it nobody is told.
    void syncRemoteControl(double limit, bool mode, std::optional<bool> storageMode,
                           const std::optional<std::string>& targetDeviceID);
    /// The time of the last command that was written for no other device, as far as that is known.
    const std::optional<Date>& lastOwnCommand() const { return lastOwnCommand_; }

    /// Reads the record of one device, or of this machine.
    void fetchLatestState(const std::optional<std::string>& deviceID, std::function<void(State)> completion);
    /// All of that record, likewise.
    void fetchLatestReport(const std::optional<std::string>& deviceID,
                           std::function<void(std::optional<DeviceReport>)> completion);

    /// Lists the first records of devices in the order in which they were created; see `devices`.
    void fetchAllDeviceStates(std::function<void(std::vector<SharedBatteryState>)> completion);

    /// Says in this machine's record what is in force here, beside its state. Not where there is no state:
    /// the others would see an empty battery.
    void saveInForce(const SettingsInForce& settings);

    /// Removes a record by its name; `completion` is told whether it is gone.
    void removeRecord(const std::string& name, std::function<void(bool isGone)> completion);

private:
    using Fill = std::function<void(CloudRecord&)>;

    template <typename Answer>
    std::function<void(Answer)> onMainThread(std::function<void(const Answer&)> act) const;
    /// Fetches the record, or makes one, and saves what `fill` sets.
    void change(const std::string& deviceID, Fill fill, CloudDatabase::Done saved);
    void uploaded(const std::optional<CloudError>& error);
    void listed(const CloudResult<CloudDatabase::Listing>& result,
                const std::function<void(std::vector<SharedBatteryState>)>& completion);
    void note(const char* operation, const std::optional<CloudError>& error);
    std::string origin() const;

    std::shared_ptr<MainLoop> loop_;
    std::shared_ptr<Clock> clock_;
    std::shared_ptr<Log> log_;
    std::set<std::string, std::less<>> failing_; ///< operations whose failure was logged
    std::string deviceName_;
    std::string currentDeviceID_;
    std::optional<Date> lastOwnCommand_;
    std::shared_ptr<CloudDatabase> database_;
    std::unique_ptr<Lifetime> using_; ///< ends with the use of that database, and its answers with it
};

} // namespace velmora
