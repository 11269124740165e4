// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "platform/Log.h"
#include "platform/MainLoop.h"
#include "platform/SecretStore.h"
#include "platform/WorkQueue.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

/// By which name the user's other machines know this one: a UUID, made at the first use. It is kept in the
/// secret store, and in a file of the user's alone beside it, so that a store that is locked or absent never
/// makes a new machine of this one. A copy that was lost is made again from the other.
///
/// Where the two differ the store's counts, and the file follows: a file is what an old backup brings back. A
/// text that is no UUID counts as none. A file that is there but cannot be read is not replaced by a new
/// identity: without the store there is none then.
///
/// Main thread only; store and file are asked on a thread of their own, for as long as that takes.
class DeviceIdentity {
public:
    static constexpr auto service = "app.velmora.identity";
    static constexpr auto account = "device_uuid";
    static constexpr auto fileName = "device-identity"; ///< in the folder of the history

    /// The identity of this machine for this user.
    static DeviceIdentity& shared();

    /// Begins to find out, once the current platform's store is ready.
    DeviceIdentity();
    ~DeviceIdentity();
    DeviceIdentity(const DeviceIdentity&) = delete;
    DeviceIdentity& operator=(const DeviceIdentity&) = delete;

    /// Calls `known` with the UUID as soon as it is known, never from inside this call. It stays the same
    /// for the life of the process.
    void whenKnown(std::function<void(const std::string& uuid)> known);

private:
    void find();
    void found(const std::string& uuid);

    Lifetime lifetime_;
    std::shared_ptr<MainLoop> loop_;
    std::shared_ptr<Log> log_;
    std::shared_ptr<SecretStore> store_;
    std::filesystem::path file_; ///< empty where the user has no folder for data
    std::unique_ptr<WorkQueue> queue_;
    std::string uuid_; ///< empty while not known
    std::vector<std::function<void(const std::string&)>> waiting_;
};

} // namespace velmora
