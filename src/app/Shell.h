// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "App.h"
#include "Options.h"
#include "bus/ApplicationObject.h"
#include "bus/Exports.h"
#include "bus/ModelObject.h"
#include "bus/SessionBus.h"
#include "tray/TrayAdvice.h"
#include "tray/TrayIcon.h"
#include "windows/WindowsFollower.h"
#include "windows/WindowsProgram.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace velmora {

/// The resident application's user interface: the tray icon, the objects and the application's name on the
/// session bus, and the windows that are requested through any of them. Main thread only.
class Shell {
public:
    /// `windows` is the program that shows them. All must outlive the shell.
    Shell(LinuxPlatform& platform, App& app, SessionBus& session, std::filesystem::path windows);
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    /// Opens what the program was started for, and the widgets that the user has shown at log-in, which is
    /// when it is started.
    void begin(Command command);

private:
    void serve(sd_bus* bus);
    void serveStatus(sd_bus* bus);
    void wireTray();
    void open(const char* window, std::string token);
    void togglePanel(std::optional<ScreenPoint> at);
    void startedAgain(const std::string& token);
    void showState();
    void showStateSoon();

    Lifetime lifetime_;
    EventLoop& loop_;
    App& app_;
    std::optional<ModelObject> model_;
    std::optional<ExportedObject> charger_;
    TrayState state_;
    std::optional<ExportedObject> status_;
    std::optional<ExportedObject> installation_;
    VersionNotice notice_;
    std::optional<ExportedObject> noticeObject_;
    NotificationStatus notifications_;
    std::optional<ExportedObject> notificationsObject_;
    WidgetSettings smallWidget_{"small"};
    WidgetSettings mediumWidget_{"medium"};
    std::optional<ExportedObject> smallWidgetObject_;
    std::optional<ExportedObject> mediumWidgetObject_;
    std::optional<ExportedObject> calendar_;
    std::optional<ExportedObject> fleet_;
    std::optional<ExportedObject> account_;
    std::optional<ApplicationObject> application_;
    WindowsProgram windows_;
    std::optional<WindowsFollower> windowsFollower_;
    TrayIcon tray_;
    std::optional<TrayAdvice> trayAdvice_;
    bool hasNoTray_ = false;
    MainLoop::Timer reopening_; ///< started again before it was known whether there is a tray
    MainLoop::Timer advising_;
    bool hasReading_ = false; ///< the model shows values of the daemon, not its initial ones
    bool isStateDue_ = false; ///< at the end of this turn
    Subscription modelChanges_;
    Subscription readings_;
    Subscription responses_;
};

/// Runs velmora until it is asked to end; returns the exit status.
int runApplication(Command command);

} // namespace velmora
