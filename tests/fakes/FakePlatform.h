// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "FakeIdentityProvider.h"
#include "FakePorts.h"
#include "FakeRecordStores.h"
#include "ManualLoop.h"
#include "ManualQueue.h"
#include "RecordingLog.h"
#include "TemporaryFolder.h"
#include "platform/Platform.h"

#include <map>
#include <string>

namespace velmora {

/// A whole machine of stand-ins, installed for as long as it lives. What is created on it, singletons
/// included, may use the ports to its end.
struct FakePlatform {
    TemporaryFolder folder;
    std::shared_ptr<ManualLoop> loop = std::make_shared<ManualLoop>();
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>(loop);
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    std::shared_ptr<FakePowerSources> powerSources = std::make_shared<FakePowerSources>();
    std::shared_ptr<FakeThermalLevel> thermalLevel = std::make_shared<FakeThermalLevel>();
    std::shared_ptr<FakePreferences> preferences = std::make_shared<FakePreferences>();
    std::shared_ptr<FakeServiceManager> serviceManager = std::make_shared<FakeServiceManager>();
    std::shared_ptr<FakeNotificationCenter> notificationCenter = std::make_shared<FakeNotificationCenter>();
    std::shared_ptr<FakeCalendarStore> calendarStore = std::make_shared<FakeCalendarStore>();
    std::shared_ptr<FakeSecretStore> secretStore = std::make_shared<FakeSecretStore>(loop);
    std::shared_ptr<FakeRecordStores> recordStores = std::make_shared<FakeRecordStores>(loop);
    std::shared_ptr<FakeIdentityProvider> identityProvider = std::make_shared<FakeIdentityProvider>();
    std::map<std::string, std::shared_ptr<ManualQueue>, std::less<>> queues; ///< by label, once asked for

private:
    std::shared_ptr<void> installed_; // before the platform, so that it ends after it

public:
    Platform platform;

    FakePlatform()
    {
        platform.mainLoop = loop;
        platform.clock = clock;
        platform.log = log;
        platform.powerSources = powerSources;
        platform.thermalLevel = thermalLevel;
        platform.preferences = preferences;
        platform.serviceManager = serviceManager;
        platform.notificationCenter = notificationCenter;
        platform.calendarStore = calendarStore;
        platform.secretStore = secretStore;
        platform.recordStores = recordStores;
        platform.identityProvider = identityProvider;
        platform.hostName = "Study";
        platform.bundleIdentifier = "app.velmora.Velmora";
        platform.makeWorkQueue = [this](std::string_view label) { return ManualQueue::handle(queue(label)); };
        platform.applicationSupportDirectories = {folder.path() / "support"};
        platform.temporaryDirectory = folder.path() / "tmp";
        std::filesystem::create_directory(platform.temporaryDirectory);
        installed_ = Platform::install(platform);
    }

    /// The queue of that label, made where it is not there yet.
    std::shared_ptr<ManualQueue> queue(std::string_view label)
    {
        auto& slot = queues[std::string(label)];
        if (!slot) slot = std::make_shared<ManualQueue>();
        return slot;
    }

    /// Lets queues and main loop work until nothing is left to do, with no time passing.
    void settle()
    {
        bool any = true;
        while (any) {
            any = loop->runPosted();
            for (const auto& [label, queue] : queues) any = queue->run() || any;
        }
    }
};

} // namespace velmora
