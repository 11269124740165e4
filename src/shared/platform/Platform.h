// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/CalendarStore.h"
#include "platform/Clock.h"
#include "platform/IdentityProvider.h"
#include "platform/Log.h"
#include "platform/MainLoop.h"
#include "platform/NotificationCenter.h"
#include "platform/PowerSources.h"
#include "platform/Preferences.h"
#include "platform/RecordStores.h"
#include "platform/SecretStore.h"
#include "platform/ServiceManager.h"
#include "platform/SystemVersion.h"
#include "platform/ThermalLevel.h"
#include "platform/WorkQueue.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <typeindex>
#include <vector>

namespace velmora {

/// The machine as the core sees it, and the owner of the core's singletons. A program's `main` installs one
/// before anything else; a test installs one made of fakes. Its singletons are destroyed with it.
struct Platform {
    std::shared_ptr<MainLoop> mainLoop;
    std::shared_ptr<Clock> clock;
    std::shared_ptr<Log> log;
    std::shared_ptr<PowerSources> powerSources;
    std::shared_ptr<ThermalLevel> thermalLevel;
    std::shared_ptr<Preferences> preferences;
    std::shared_ptr<ServiceManager> serviceManager;
    std::shared_ptr<NotificationCenter> notificationCenter;
    std::shared_ptr<SecretStore> secretStore;
    std::shared_ptr<CalendarStore> calendarStore;
    std::shared_ptr<RecordStores> recordStores;
    std::shared_ptr<IdentityProvider> identityProvider;
    /// Makes a serial queue; `label` names its thread.
    std::function<std::unique_ptr<WorkQueue>(std::string_view label)> makeWorkQueue;
    /// The user's data folders for applications, best first; may be empty.
    std::vector<std::filesystem::path> applicationSupportDirectories;
    std::filesystem::path temporaryDirectory; ///< closed to other users; empty where there is none
    SystemVersion systemVersion;
    std::string hostName;         ///< what the user calls this machine; empty where it has no name
    std::string bundleIdentifier; ///< under which the desktop knows this program; empty where it does not

    /// The one T of this platform, created on first use. Main thread only.
    template <typename T>
    T& singleton()
    {
        auto& slot = singletons_[typeid(T)];
        if (!slot) slot = std::make_shared<T>();
        return *static_cast<T*>(slot.get());
    }

    /// The installed platform. Throws std::logic_error where `main` has installed none.
    static Platform& current();

    /// Makes `platform` the current one until the result goes, then restores the one before.
    [[nodiscard]] static std::shared_ptr<void> install(Platform& platform);

private:
    std::map<std::type_index, std::shared_ptr<void>> singletons_; // last, so that they go before the ports
};

} // namespace velmora
