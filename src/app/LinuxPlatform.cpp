// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LinuxPlatform.h"

#include "base/HostName.h"
#include "base/JournalLog.h"
#include "base/KernelVersion.h"
#include "base/PreferencesFile.h"
#include "base/SystemClock.h"
#include "base/WorkerThread.h"
#include "desktop/CalendarHelpers.h"
#include "desktop/DesktopNotificationCenter.h"
#include "desktop/SecretService.h"
#include "identity/Browser.h"
#include "identity/OpenIDProvider.h"
#include "modules/ModuleLoader.h"
#include "power/LinuxPowerSources.h"
#include "records/LinuxRecordStores.h"
#include "systemd/SystemdServiceManager.h"
#include "wire/ModelFace.h"

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace velmora {

namespace {

/// The folder that the variable names, or else that one in the user's home, where one is given; else empty.
std::filesystem::path userFolder(const char* variable, const char* inHome)
{
    const auto valueOf = [](const char* name) -> std::filesystem::path {
        const char* value = std::getenv(name);
        return value ? value : "";
    };
    if (auto named = valueOf(variable); named.is_absolute()) return named;
    if (const auto home = valueOf("HOME"); inHome && home.is_absolute()) return home / inHome;
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

/// Not a link, owned by this user, closed to everybody else.
bool isPrivate(const std::filesystem::path& folder)
{
    struct stat found {};
    return lstat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == geteuid() &&
           (found.st_mode & 077U) == 0;
}

/// The session's own folder, else one made in the folder that all users share, where anybody could have laid
/// a link under our name.
std::filesystem::path temporaryFolder(Log& log)
{
    if (auto folder = userFolder("XDG_RUNTIME_DIR", nullptr); isPrivate(folder)) return folder;
    std::error_code error;
    const auto shared = std::filesystem::temp_directory_path(error);
    auto folder = (error ? "/tmp" : shared) / ("velmora-" + std::to_string(geteuid()));
    mkdir(folder.c_str(), 0700);
    if (isPrivate(folder)) return folder;
    log.warning("LinuxPlatform", folder.string() +
                                     " is not a folder of this user's alone; no temporary files "
                                     "are kept.");
    return {};
}

std::filesystem::path programFolder()
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

/// A program of ours that no person starts: beside this one where it was built, in libexec where it is
/// installed.
std::filesystem::path helperProgram(const char* name)
{
    const auto folder = programFolder();
    if (auto beside = folder / name; access(beside.c_str(), X_OK) == 0) return beside;
    return folder.parent_path() / "libexec" / name;
}

std::shared_ptr<CalendarStore> calendarStore(Log& log)
{
    return std::make_shared<CalendarHelpers>(
        CalendarHelpers::Setup{.files = helperProgram("velmora-calendar"),
                               .service = helperProgram("velmora-calendar-eds"),
                               .folders = CalendarHelpers::usualFolders(
                                   userFolder("XDG_DATA_HOME", ".local/share"), userFolder("HOME", nullptr))},
        log);
}

/// The variable VELMORA_RECORDS puts another file in the place of the user's own, for simulated fleets.
std::filesystem::path recordsFile()
{
    if (auto named = userFolder("VELMORA_RECORDS", nullptr); !named.empty()) return named;
    const auto folders = dataFolders();
    return folders.empty() ? std::filesystem::path() : folders.front() / "Velmora" / "cloud.db";
}

/// Modules lie in ../lib/velmora where they were built, and in the system's folder of libraries where they
/// are installed.
std::vector<std::filesystem::path> moduleFolders()
{
    const auto prefix = programFolder().parent_path();
    return {prefix / "lib" / "velmora", prefix / VELMORA_LIBDIR / "velmora"};
}

/// With a secret store of its own, which is not cancelled before the last token is in it.
std::shared_ptr<IdentityProvider> openIDProvider(const std::shared_ptr<EventLoop>& loop,
                                                 const std::shared_ptr<Log>& log)
{
    static constexpr ModuleLoader::Name module{"velmora-openid.so", "velmora-openid", identityModuleEntry};
    const auto loader = std::make_shared<ModuleLoader>(
        ModuleLoader::Setup{.folders = moduleFolders(),
                            .category = "OpenIDProvider",
                            .consequence = "Nobody can sign in, and no sign-in is confirmed."},
        log);
    const auto browser = std::make_shared<Browser>(*loop, log);
    return std::make_shared<OpenIDProvider>(OpenIDProvider::Setup{
        .loop = loop,
        .log = log,
        .secrets = std::make_shared<SecretService>(*loop, nullptr),
        .open =
            [loader](IdentityAccess access) {
                const auto* found = loader->module<IdentityModule>(module);
                return found ? found->open(std::move(access)) : nullptr;
            },
        .openBrowser = [browser](const auto& url, const auto& anchor,
                                 auto failed) { return browser->open(url, anchor, std::move(failed)); }});
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
    thermalEvents_ = std::make_unique<ThermalEvents>(*loop_, sysfs);
    thermal_ = std::make_shared<LinuxThermalLevel>(sysfs, log(), thermalEvents_.get());
    platform_.thermalLevel = thermal_;
    platform_.makeWorkQueue = [](std::string_view label) { return std::make_unique<WorkerThread>(label); };
    platform_.preferences = std::make_shared<PreferencesFile>(
        preferencesFolder(), platform_.makeWorkQueue("velmora-prefs"), clock(), log());
    platform_.calendarStore = calendarStore(log());
    platform_.serviceManager = std::make_shared<SystemdServiceManager>(*loop_, log());
    platform_.recordStores = std::make_shared<LinuxRecordStores>(
        LinuxRecordStores::Setup{.folders = moduleFolders(), .file = recordsFile()}, platform_.mainLoop,
        platform_.log);
    platform_.identityProvider = openIDProvider(loop_, platform_.log);
    platform_.hostName = hostName();
    platform_.applicationSupportDirectories = dataFolders();
    platform_.temporaryDirectory = temporaryFolder(log());
    platform_.systemVersion = kernelVersion();
    platform_.bundleIdentifier = wire::face::serviceName;
    useSession(nullptr);
    installed_ = Platform::install(platform_);
}

void LinuxPlatform::useSession(sd_bus* session)
{
    platform_.notificationCenter = std::make_shared<DesktopNotificationCenter>(
        *loop_, session, notifications::Sender{.name = "Velmora", .desktopEntry = wire::face::serviceName});
    platform_.secretStore = std::make_shared<SecretService>(*loop_, session);
}

} // namespace velmora
