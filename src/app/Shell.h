// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "App.h"
#include "Options.h"
#include "bus/ApplicationObject.h"
#include "bus/Exports.h"
#include "bus/ModelObject.h"
#include "bus/NameOwner.h"
#include "bus/SessionBus.h"
#include "tray/TrayIcon.h"
#include "windows/WindowsProgram.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace velmora {

/// The resident application as a person meets it: the tray icon, the model's face and the application's name
/// on the session bus, and the windows that are asked for through any of them. Main thread only.
class Shell {
public:
    /// `windows` is the program that shows them. All must outlive the shell.
    Shell(LinuxPlatform& platform, App& app, SessionBus& session, std::filesystem::path windows);
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    /// What the person asked for who started this program, and the widgets that are wished at log-in, which
    /// is when it is started.
    void begin(Command command);

private:
    void serve(sd_bus* bus);
    void wireTray();
    void followWindows(sd_bus* bus);
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
    std::optional<ExportedObject> installation_;
    VersionNotice notice_;
    std::optional<ExportedObject> noticeObject_;
    WidgetSettings smallWidget_{"small"};
    WidgetSettings mediumWidget_{"medium"};
    std::optional<ExportedObject> smallWidgetObject_;
    std::optional<ExportedObject> mediumWidgetObject_;
    std::optional<ApplicationObject> application_;
    WindowsProgram windows_;
    std::optional<NameOwner> windowsOwner_; ///< their program, which ends with the last of them
    MainLoop::Timer asking_;                ///< while a window is open
    TrayIcon tray_;
    bool hasNoTray_ = false;
    MainLoop::Timer reopening_; ///< somebody came before it was known whether there is a tray
    bool hasReading_ = false;   ///< the model shows what the daemon said, not what it began with
    bool isStateDue_ = false;   ///< at the end of this turn
    Subscription modelChanges_;
    Subscription readings_;
};

/// Runs velmora until it is asked to end; returns the exit status.
int runApplication(Command command);

} // namespace velmora
