// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/InstallationManager.h"

#include "base/Translation.h"
#include "platform/Platform.h"

#include <utility>

namespace velmora {

InstallationManager::InstallationManager()
    : daemonService_(Platform::current().serviceManager),
      preferences_(Platform::current().preferences),
      isInstallationCompleted(daemonService_->status() == ServiceManager::Status::enabled, nullptr, [this] {
          preferences_->set(preference_key::daemonInstalled, isInstallationCompleted.get());
      })
{
}

void InstallationManager::begin()
{
    if (isInstalling.get()) return;
    isInstalling.set(true);
    installationProgress.set(0.1);
    installationError.set(std::nullopt);
    installDaemon([](bool) {});
}

void InstallationManager::installDaemon(std::function<void(bool)> completion)
{
    daemonService_->registerService(
        lifetime_.guard([this, completion = std::move(completion)](const auto& error) {
            registered(error);
            completion(!error);
        }));
}

void InstallationManager::registered(const std::optional<ServiceManager::Error>& error)
{
    if (error) {
        installationError.set(humanReadableError(*error));
        isInstalling.set(false);
        installationProgress.set(0);
    } else {
        installationProgress.set(1);
        isInstallationCompleted.set(true);
        isInstalling.set(false);
    }
}

std::string InstallationManager::humanReadableError(const ServiceManager::Error& error)
{
    using enum ServiceManager::ErrorCode;
    switch (error.code) {
    case invalidSignature:
        return tr("Invalid code signature. Please re-download Velmora from %1.", projectPage);
    case authorizationDenied:
        return tr("Authorization denied. Admin privileges are required to install the Velmora daemon.");
    case alreadyRegistered:
        isInstallationCompleted.set(true); // by another program, which is just as good
        return "";
    default:
        return tr("Installation failed: %1", error.description);
    }
}

} // namespace velmora
