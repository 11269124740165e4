// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LinuxPlatform.h"

#include "base/JournalLog.h"
#include "base/KernelVersion.h"
#include "base/PreferencesFile.h"
#include "base/SystemClock.h"
#include "base/WorkerThread.h"
#include "power/LinuxPowerSources.h"
#include "power/LinuxThermalLevel.h"
#include "systemd/SystemdServiceManager.h"

#include <cstdlib>
#include <utility>

namespace velmora {

namespace {

/// The folder that the variable names, or else that one in the user's home; empty for a user without a home.
std::filesystem::path userFolder(const char* variable, const char* inHome)
{
    const auto valueOf = [](const char* name) -> std::filesystem::path {
        const char* value = std::getenv(name);
        return value ? value : "";
    };
    if (auto named = valueOf(variable); named.is_absolute()) return named;
    if (const auto home = valueOf("HOME"); home.is_absolute()) return home / inHome;
    return {};
}

std::vector<std::filesystem::path> dataFolders()
{
    auto folder = userFolder("XDG_DATA_HOME", ".local/share");
    if (folder.empty()) return {};
    return {std::move(folder)};
}

std::filesystem::path preferencesFolder()
{
    const auto folder = userFolder("XDG_CONFIG_HOME", ".config");
    return folder.empty() ? folder : folder / "velmora";
}

std::filesystem::path temporaryFolder()
{
    std::error_code error;
    auto folder = std::filesystem::temp_directory_path(error);
    return error ? "/tmp" : folder;
}

} // namespace

LinuxPlatform::LinuxPlatform(const std::string& program) : loop_(std::make_shared<EventLoop>())
{
    const Sysfs sysfs = Sysfs::ofEnvironment();
    platform_.mainLoop = loop_;
    platform_.clock = std::make_shared<SystemClock>();
    platform_.log = std::make_shared<JournalLog>(program);
    monitor_ = std::make_unique<PowerSupplyMonitor>(*loop_, sysfs, log());
    platform_.powerSources = std::make_shared<LinuxPowerSources>(sysfs, clock(), log(), monitor_.get());
    platform_.thermalLevel = std::make_shared<LinuxThermalLevel>(sysfs, log());
    platform_.makeWorkQueue = [](std::string_view label) { return std::make_unique<WorkerThread>(label); };
    platform_.preferences = std::make_shared<PreferencesFile>(
        preferencesFolder(), platform_.makeWorkQueue("velmora-prefs"), clock(), log());
    platform_.serviceManager = std::make_shared<SystemdServiceManager>(*loop_, log());
    platform_.applicationSupportDirectories = dataFolders();
    platform_.temporaryDirectory = temporaryFolder();
    platform_.systemVersion = kernelVersion();
    installed_ = Platform::install(platform_);
}

} // namespace velmora
