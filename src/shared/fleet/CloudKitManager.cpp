// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "fleet/CloudKitManager.h"

#include "platform/Platform.h"

#include <utility>

namespace velmora {

namespace {

constexpr auto category = "CloudKitManager";
constexpr auto nameless = "Mac"; ///< what a machine without a name is called

std::optional<CloudError> errorOf(const auto& result)
{
    const auto* error = std::get_if<CloudError>(&result);
    return error ? std::optional(*error) : std::nullopt;
}

std::vector<DeviceReport> reportsOf(const CloudDatabase::Listing& listing)
{
    std::vector<DeviceReport> reports;
    for (const auto& result : listing)
        if (const auto* record = std::get_if<CloudRecord>(&result)) reports.emplace_back(*record);
    return reports;
}

} // namespace

CloudKitManager& CloudKitManager::shared()
{
    return Platform::current().singleton<CloudKitManager>();
}

CloudKitManager::CloudKitManager()
    : loop_(Platform::current().mainLoop),
      clock_(Platform::current().clock),
      log_(Platform::current().log),
      deviceName_(Platform::current().hostName.empty() ? nameless : Platform::current().hostName),
      using_(std::make_unique<Lifetime>())
{
}

void CloudKitManager::useDatabase(std::shared_ptr<CloudDatabase> database, std::string currentDeviceID)
{
    using_ = std::make_unique<Lifetime>();
    database_ = std::move(database);
    currentDeviceID_ = std::move(currentDeviceID);
    if (isSyncing.get()) isSyncing.set(false);
    if (!devices.get().empty()) devices.set({});
    lastFault.set(RecordFault::none);
    failing_.clear();
    hasDatabase.set(database_ != nullptr);
}

/// What the database answers on its own thread; it reaches `act` while that database is in use.
template <typename Answer>
std::function<void(Answer)> CloudKitManager::onMainThread(std::function<void(const Answer&)> act) const
{
    return [loop = loop_, act = using_->guard(std::move(act))](Answer answer) {
        loop->post([act, answer = std::move(answer)] { act(answer); });
    };
}

void CloudKitManager::change(const std::string& deviceID, Fill fill, CloudDatabase::Done saved)
{
    const auto name = device_record::nameOf(deviceID);
    const auto fetched = [this, name, fill = std::move(fill),
                          saved = std::move(saved)](const CloudResult<CloudRecord>& result) {
        const auto* found = std::get_if<CloudRecord>(&result);
        const auto error = errorOf(result);
        const bool isOwn = name == device_record::nameOf(currentDeviceID_);
        if (isOwn && error && error->code == CloudError::Code::unreadable)
            database_->remove(name, [](const auto&) {}); // or it would stay so for ever
        auto record = found ? *found : CloudRecord(device_record::type, name);
        fill(record);
        database_->save(std::move(record), onMainThread<std::optional<CloudError>>(saved));
    };
    database_->fetch(name, onMainThread<CloudResult<CloudRecord>>(fetched));
}

void CloudKitManager::syncState(double percentage, bool isCharging, std::string thermalState)
{
    if (isSyncing.get() || !database_) return;
    isSyncing.set(true);
    const auto fill = [this, percentage, isCharging, thermalState = std::move(thermalState)](auto& record) {
        record.set(device_record::percentage, percentage);
        record.set(device_record::isCharging, isCharging);
        record.set(device_record::thermalState, thermalState);
        record.set(device_record::deviceName, deviceName_);
        record.set(device_record::lastUpdate, clock_->now());
    };
    change(currentDeviceID_, fill, [this](const auto& error) { uploaded(error); });
}

void CloudKitManager::uploaded(const std::optional<CloudError>& error)
{
    isSyncing.set(false);
    note("CloudKit sync", error);
    if (!error) lastSyncDate.set(clock_->now());
}

void CloudKitManager::syncRemoteControl(double limit, bool mode, std::optional<bool> storageMode,
                                        const std::optional<std::string>& targetDeviceID)
{
    if (!database_) return;
    const bool isOwn = !targetDeviceID;
    const auto fill = [this, limit, mode, storageMode, isOwn](CloudRecord& record) {
        record.set(device_record::remoteChargeLimit, limit);
        record.set(device_record::remoteAppleMode, mode);
        if (storageMode) record.set(device_record::isStorageModeEnabled, *storageMode);
        record.set(device_record::commandTimestamp, clock_->now());
        record.set(device_record::commandOrigin, origin());
        if (isOwn) lastOwnCommand_ = clock_->now();
    };
    change(targetDeviceID.value_or(currentDeviceID_), fill, [](const auto&) {});
}

void CloudKitManager::fetchLatestReport(const std::optional<std::string>& deviceID,
                                        std::function<void(std::optional<DeviceReport>)> completion)
{
    if (!database_) return completion(std::nullopt);
    const auto fetched = [completion = std::move(completion)](const CloudResult<CloudRecord>& result) {
        const auto* record = std::get_if<CloudRecord>(&result);
        completion(record ? std::optional<DeviceReport>(*record) : std::nullopt);
    };
    database_->fetch(device_record::nameOf(deviceID.value_or(currentDeviceID_)),
                     onMainThread<CloudResult<CloudRecord>>(fetched));
}

void CloudKitManager::fetchLatestState(const std::optional<std::string>& deviceID,
                                       std::function<void(State)> completion)
{
    fetchLatestReport(deviceID, [completion = std::move(completion)](const auto& report) {
        completion(report ? State(report->state) : std::nullopt);
    });
}

void CloudKitManager::fetchAllDeviceStates(std::function<void(std::vector<SharedBatteryState>)> completion)
{
    if (!database_) return completion({});
    const auto queried =
        [this, completion = std::move(completion)](const CloudResult<CloudDatabase::Listing>& result) {
            listed(result, completion);
        };
    database_->query(device_record::type, CloudDatabase::maximumResults,
                     onMainThread<CloudResult<CloudDatabase::Listing>>(queried));
}

void CloudKitManager::listed(const CloudResult<CloudDatabase::Listing>& result,
                             const std::function<void(std::vector<SharedBatteryState>)>& completion)
{
    note("CloudKit fetchAll", errorOf(result));
    const auto* listing = std::get_if<CloudDatabase::Listing>(&result);
    auto reports = listing ? reportsOf(*listing) : std::vector<DeviceReport>{};
    std::vector<SharedBatteryState> states;
    for (const auto& report : reports) states.push_back(report.state);
    devices.set(std::move(reports));
    lastListDate.set(clock_->now());
    completion(std::move(states));
}

void CloudKitManager::saveInForce(const SettingsInForce& settings)
{
    if (!database_) return;
    CloudRecord record(device_record::type, device_record::nameOf(currentDeviceID_));
    record.set(device_record::limitInForce, settings.limit);
    record.set(device_record::autoProtectInForce, settings.isAutoProtectOn);
    record.set(device_record::storageModeInForce, settings.isStorageModeOn);
    record.set(device_record::acceptsCommands, settings.acceptsCommands);
    if (settings.commandTaken) record.set(device_record::commandTaken, *settings.commandTaken);
    const auto saved = [this](const auto& error) { note("CloudKit settings", error); };
    const auto fetched = [this, record, saved](const CloudResult<CloudRecord>& result) {
        const auto* found = std::get_if<CloudRecord>(&result);
        if (found && found->value<Date>(device_record::lastUpdate))
            database_->save(record, onMainThread<std::optional<CloudError>>(saved));
        else if (const auto error = errorOf(result); error && error->code == CloudError::Code::failed)
            saved(error);
    };
    database_->fetch(record.name(), onMainThread<CloudResult<CloudRecord>>(fetched));
}

void CloudKitManager::removeRecord(const std::string& name, std::function<void(bool)> completion)
{
    if (!database_) return completion(false);
    const auto removed = [this, completion = std::move(completion)](const auto& error) {
        note("CloudKit remove", error);
        completion(!error);
    };
    database_->remove(name, onMainThread<std::optional<CloudError>>(removed));
}

void CloudKitManager::leave(std::function<void(bool)> completion)
{
    const auto database = database_;
    useDatabase(nullptr, currentDeviceID_);
    if (!database) return completion(false);
    // The answer holds the database until it has reached this thread: it must not end on its own.
    const auto removed =
        lifetime_.guard([database, completion = std::move(completion)](bool isGone) { completion(isGone); });
    database->remove(device_record::nameOf(currentDeviceID_), [loop = loop_, removed](const auto& error) {
        loop->post([removed, isGone = !error] { removed(isGone); });
    });
}

void CloudKitManager::note(const char* operation, const std::optional<CloudError>& error)
{
    lastFault.set(error ? error->fault : RecordFault::none);
    if (!error)
        failing_.erase(operation);
    else if (failing_.insert(operation).second)
        log_->error(category, std::string(operation) + " error: " + error->text);
}

std::string CloudKitManager::origin() const
{
    return deviceName_ + " (" + currentDeviceID_ + ")";
}

} // namespace velmora
