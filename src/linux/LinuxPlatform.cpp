// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LinuxPlatform.h"

#include "JournalLog.h"
#include "LinuxPowerSources.h"
#include "LinuxThermalLevel.h"
#include "SystemClock.h"
#include "WorkerThread.h"

#include <cstdlib>

namespace velmora {

namespace {

/// $XDG_DATA_HOME, or ~/.local/share where that is unset; none for a user without a home.
std::vector<std::filesystem::path> dataFolders()
{
    const auto variable = [](const char* name) -> std::filesystem::path {
        const char* value = std::getenv(name);
        return value ? value : "";
    };
    if (const auto data = variable("XDG_DATA_HOME"); data.is_absolute()) return {data};
    if (const auto home = variable("HOME"); home.is_absolute()) return {home / ".local/share"};
    return {};
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
    platform_.applicationSupportDirectories = dataFolders();
    platform_.temporaryDirectory = temporaryFolder();
    installed_ = Platform::install(platform_);
}

} // namespace velmora
