// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Shell.h"

#include "base/Utf8.h"
#include "tray/BatteryPicture.h"
#include "tray/TrayStateOf.h"

#include <csignal>
#include <utility>

namespace velmora {

namespace {

/// Both kinds of tray have been tried by then.
constexpr auto trayPatience = 2 * TrayIcon::usualPatience + std::chrono::seconds{1};
/// A desktop that has just begun has its panel by then.
constexpr std::chrono::seconds advicePatience{15};

} // namespace

Shell::Shell(LinuxPlatform& platform, App& app, SessionBus& session, std::filesystem::path windows)
    : loop_(platform.loop()),
      app_(app),
      windows_(loop_, session.handle(), platform.clock(), platform.log(), std::move(windows)),
      tray_(loop_, session.handle(), platform.log())
{
    if (sd_bus* bus = session.handle()) {
        serve(bus);
        trayAdvice_.emplace(bus);
        // Heat and level move while the firmware holds the charge, and the daemon says so only when asked.
        windowsFollower_.emplace(loop_, bus, [this] { app_.askDaemon(); });
    }
    // The session has ended, and its programs with it. The daemon goes on protecting.
    session.onLost = [this] { loop_.stop(); };
    wireTray();
    app_.onDaemonPresence = [this] {
        if (installation_) installation_->derivedChanged();
        showStateSoon();
    };
    app_.onChargerChange = [this] {
        if (charger_) charger_->derivedChanged();
        showStateSoon();
    };
    responses_ = Platform::current().notificationCenter->observeResponses([this](const auto& response) {
        if (response.action == NotificationResponse::click) open(wire::windows::panel, response.token);
    });
    modelChanges_ = app_.model().willChange.observe([this] { showStateSoon(); });
    readings_ = app_.model().percentage.observe([this](double) { hasReading_ = true; });
    showState();
}

void Shell::serve(sd_bus* bus)
{
    model_.emplace(loop_, bus, app_.model());
    model_->onQuit = [this] { loop_.stop(); };
    model_->asPerson = [this](const auto& act) { app_.asPerson(act); };
    const auto serve = [&](std::optional<ExportedObject>& object, const wire::face::Face& face, auto&& what) {
        exports::serve(object.emplace(loop_, bus, face), what);
    };
    exports::serve(
        charger_.emplace(loop_, bus, wire::face::charger::face), [this] { return app_.charger(); },
        [this] { return app_.refusal(); });
    // Now rather than at its first use: otherwise a window could open with the wrong one of its two views.
    exports::serve(installation_.emplace(loop_, bus, wire::face::installation::face),
                   Platform::current().singleton<InstallationManager>(),
                   [this] { return !app_.isDaemonMissing(); });
    serve(noticeObject_, wire::face::notice::face, notice_);
    exports::serve(notificationsObject_.emplace(loop_, bus, wire::face::notifications::face), notifications_,
                   DeliveredNotices::shared());
    serve(smallWidgetObject_, wire::face::widget::small, smallWidget_);
    serve(mediumWidgetObject_, wire::face::widget::medium, mediumWidget_);
    exports::serve(calendar_.emplace(loop_, bus, wire::face::calendar::face),
                   CalendarContextManager::shared(), app_.calendarConsent(), app_.travelCharge());
    exports::serve(fleet_.emplace(loop_, bus, wire::face::fleet::face), app_.ecosystemSync(),
                   CloudKitManager::shared(), [this] { app_.model().fetchFleetStates(); });
    exports::serve(account_.emplace(loop_, bus, wire::face::account::face), app_.account());
    serveStatus(bus);
    application_.emplace(bus);
    application_->onActivate = [this](const std::string& token) { startedAgain(token); };
    application_->onWindow = [this](const char* window, const std::string& token) { open(window, token); };
    application_->onQuit = [this] { loop_.stop(); };
}

void Shell::serveStatus(sd_bus* bus)
{
    using namespace wire::face::status;
    using Value = KeyedArchive::Value;
    status_.emplace(loop_, bus, face);
    status_->derive(sentence, [this] { return Value(cleanUtf8(state_.tooltip)); });
    status_->derive(
        icon, [this] { return Value(trayIconName(shownPercent(state_.percentage), state_.isCharging)); });
    status_->derive(takesLimit, [this] { return Value(state_.takesLimit); });
    status_->serve();
}

void Shell::wireTray()
{
    tray_.onActivate = [this](std::optional<ScreenPoint> at) { togglePanel(at); };
    tray_.onOpenPanel = [this] { open(wire::windows::panel, tray_.takeActivationToken()); };
    tray_.onLaunchDashboard = [this] { open(wire::windows::dashboard, tray_.takeActivationToken()); };
    auto& model = app_.model();
    const auto set = [this, &model](auto& setting, auto value) {
        app_.asPerson([&] {
            setting.set(value);
            model.syncSettingsToDaemon();
        });
    };
    tray_.onLimit = [set, &model](double limit) { set(model.customChargeLimit, limit); };
    tray_.onAutoProtect = [set, &model] {
        set(model.isAppleRecommendedModeEnabled, !model.isAppleRecommendedModeEnabled.get());
    };
    tray_.onQuickCharge = [this, &model] { app_.asPerson([&model] { model.toggleTemporaryOverride(); }); };
    tray_.onQuit = [this] { loop_.stop(); };
    tray_.onNoHost = [this] {
        hasNoTray_ = true;
        // At log-in a desktop's panel may still be on its way.
        advising_ = loop_.after(
            advicePatience,
            [this] {
                if (trayAdvice_ && !tray_.isShown()) trayAdvice_->give();
            },
            advicePatience);
    };
}

void Shell::begin(Command command)
{
    const auto* action = actionOf(command);
    if (const auto* window = action ? wire::face::windowOf(action) : nullptr) open(window, "");
    // The user did not ask for these just now, so they leave the focus where it is.
    if (smallWidget_.isShownAtLogIn.get())
        windows_.request({.window = wire::windows::smallWidget, .takesFocus = false});
    if (mediumWidget_.isShownAtLogIn.get())
        windows_.request({.window = wire::windows::mediumWidget, .takesFocus = false});
}

void Shell::open(const char* window, std::string token)
{
    app_.model().fetchHistory();
    windows_.request({.window = window, .token = std::move(token)});
}

void Shell::togglePanel(std::optional<ScreenPoint> at)
{
    app_.model().fetchHistory();
    windows_.request(
        {.window = wire::windows::panel, .isToggle = true, .at = at, .token = tray_.takeActivationToken()});
}

void Shell::startedAgain(const std::string& token)
{
    if (tray_.isShown()) return; // the user sees the icon
    if (hasNoTray_) return open(wire::windows::panel, token);
    // A tray may be about to show it.
    reopening_ = loop_.after(trayPatience, [this, token] {
        if (!tray_.isShown()) open(wire::windows::panel, token);
    });
}

void Shell::showStateSoon()
{
    if (std::exchange(isStateDue_, true)) return;
    loop_.post(lifetime_.guard([this] {
        isStateDue_ = false;
        showState();
    }));
}

void Shell::showState()
{
    using enum Freshness;
    const auto freshness = app_.isDaemonMissing() ? stale : hasReading_ ? live : pending;
    state_ = trayStateOf(app_.model(), app_.charger(), freshness);
    tray_.show(state_);
    if (status_) status_->derivedChanged();
}

namespace {

/// The windows' program stands beside this one.
std::filesystem::path windowsProgram()
{
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    return self.parent_path() / "velmora-ui";
}

} // namespace

int runApplication(Command command)
{
    LinuxPlatform platform("velmora");
    platform.loop().stopOn({SIGTERM, SIGINT});
    SessionBus session(platform.loop(), platform.log());
    if (platform.loop().isOver()) return 0;
    const bool isToStay = command == Command::run || command == Command::background;
    if (session.role() == SessionBus::Role::secondary)
        return command == Command::background || session.forward(actionOf(command)) ? 0 : 1;
    if (!isToStay && !session.handle()) return 1; // the log says why
    if (command == Command::quit) return 0;       // no instance is running
    platform.useSession(session.handle());
    App app(platform);
    Shell shell(platform, app, session, windowsProgram());
    shell.begin(command);
    platform.loop().run();
    return 0;
}

} // namespace velmora
