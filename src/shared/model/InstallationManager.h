// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "base/Observable.h"
#include "platform/Preferences.h"
#include "platform/ServiceManager.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velmora {

/// Where users download Velmora.
inline constexpr auto projectPage = "https://velmora.app";

/// Whether the daemon is registered with the system, and the way there: not installed, installing, installed;
/// or not installed again, with `installationError` set. Nothing here unregisters it.
///
/// The one of this run is Platform::current().singleton<InstallationManager>(). Main thread only.
class InstallationManager {
    Lifetime lifetime_;
    std::shared_ptr<ServiceManager> daemonService_;
    std::shared_ptr<Preferences> preferences_;

public:
    /// The daemon is registered; every assignment is remembered, the initial value is not.
    Observable<bool> isInstallationCompleted;
    Observable<bool> isInstalling{false};
    Observable<double> installationProgress{0}; ///< 0 to 1
    /// The last failure. Empty for one that does not matter: the daemon had been registered before.
    Observable<std::optional<std::string>> installationError{std::nullopt};

    /// Reads the state from the service manager, which may block for a moment.
    InstallationManager();
    InstallationManager(const InstallationManager&) = delete;
    InstallationManager& operator=(const InstallationManager&) = delete;

    /// Registers the daemon at the user's request, unless that is under way.
    void begin();

    /// The registration itself; `completion` is called with whether it succeeded.
    void installDaemon(std::function<void(bool isSuccess)> completion);

private:
    void registered(const std::optional<ServiceManager::Error>& error);
    std::string humanReadableError(const ServiceManager::Error& error);
};

} // namespace velmora
