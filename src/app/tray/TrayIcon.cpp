// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/TrayIcon.h"

#include "base/Translation.h"
#include "base/Utf8.h"
#include "texts/PanelTexts.h"
#include "tray/StatusNotifierItem.h"
#include "tray/XEmbedIcon.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

/// The folder with the themes that our icons were installed into, beside this program; empty where they are
/// not.
std::string installedIcons()
{
    std::error_code failure;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
    const auto icons = program.parent_path().parent_path() / "share/icons";
    const auto one = icons / "hicolor/scalable/status" / (trayIconName(0, false) + ".svg");
    return std::filesystem::exists(one, failure) ? icons.string() : "";
}

} // namespace

TrayIcon::TrayIcon(EventLoop& loop, sd_bus* session, Log& log, std::chrono::milliseconds patience)
    : loop_(loop), complaints_(log, "TrayIcon"), patience_(patience)
{
    if (session) serveOn(session, log);
    changed();
}

TrayIcon::~TrayIcon() = default;

void TrayIcon::serveOn(sd_bus* session, Log& log)
try {
    menu_ = std::make_unique<TrayMenu>(session, menu());
    item_ = std::make_unique<StatusNotifierItem>(loop_, session, log, installedIcons());
    item_->onChanged = [this] { changed(); };
    item_->onActivate = [this](auto at) { call(onActivate, at); };
} catch (const std::system_error& failure) {
    complaints_.raise("serve", std::string("Cannot export the tray icon on the session bus: ") +
                                   failure.what() + "; trying an X11 tray icon.");
}

/// The state in words first: some hosts show neither a tooltip nor anything else on a click.
std::vector<TrayMenu::Entry> TrayIcon::menu()
{
    using Mark = TrayMenu::Entry::Mark;
    std::vector<TrayMenu::Entry> entries{
        {.label = state_.tooltip.empty() ? tr("Velmora") : cleanUtf8(state_.tooltip), .isEnabled = false},
        {}};
    const auto offer = [&](const std::string& label, Mark mark, bool isMarked, std::function<void()> chosen) {
        entries.push_back({label, mark, isMarked, state_.takesLimit, std::move(chosen)});
    };
    for (const auto& [text, limit] : panel::thresholds)
        offer(tr(text), Mark::radio, state_.limit == limit, [this, at = limit] { call(onLimit, at); });
    offer(tr("Auto-Protect"), Mark::check, state_.isAutoProtectOn, [this] { call(onAutoProtect); });
    offer(panel::quickChargeTitle(state_.isQuickChargeOn), Mark::none, false,
          [this] { call(onQuickCharge); });
    entries.push_back({});
    entries.push_back({.label = tr("Open Velmora"), .chosen = [this] { call(onOpenPanel); }});
    entries.push_back({.label = tr("Launch Dashboard"), .chosen = [this] { call(onLaunchDashboard); }});
    entries.push_back({});
    entries.push_back({.label = tr("Quit Velmora"), .chosen = [this] { call(onQuit); }});
    return entries;
}

bool TrayIcon::isShown() const
{
    return (item_ && item_->isShown()) || (embedded_ && embedded_->isDocked());
}

void TrayIcon::show(const TrayState& state)
{
    if (std::exchange(state_, state) == state) return;
    if (menu_) menu_->show(menu());
    if (item_) item_->show(state_);
    if (embedded_) embedded_->show(state_);
}

std::string TrayIcon::takeActivationToken()
{
    return item_ ? item_->takeActivationToken() : "";
}

void TrayIcon::changed()
{
    if (!isShown()) {
        if (!next_) next_ = loop_.after(patience_, [this] { descend(); });
        return;
    }
    next_.reset();
    complaints_.settle("none");
    // Not from here: it may be the embedded icon that called.
    if (item_ && item_->isShown()) loop_.post(lifetime_.guard([this] { ascended(); }));
}

void TrayIcon::ascended()
{
    if (item_ && item_->isShown()) embedded_.reset();
}

void TrayIcon::descend()
{
    next_.reset();
    if (!embedded_ && embed()) return changed(); // until it has docked
    giveUp();
    if (!embedded_ && retries_ > 0) tryAgainLater();
}

bool TrayIcon::embed()
{
    embedded_ = XEmbedIcon::open(loop_);
    if (!embedded_) return false;
    embedded_->show(state_);
    embedded_->onChanged = [this] { changed(); };
    embedded_->onActivate = [this](ScreenPoint at) { call(onActivate, std::optional(at)); };
    embedded_->onLost = [this] {
        embedded_.reset();
        retries_ = maximumRetries;
        changed();
    };
    return true;
}

void TrayIcon::giveUp()
{
    complaints_.raise("none", "No tray shows the icon. Velmora opens from the list of applications.");
    call(std::exchange(onNoHost, nullptr));
}

void TrayIcon::tryAgainLater()
{
    const int tried = maximumRetries - retries_--;
    next_ = loop_.after(patience_ * (2 << tried), [this] { descend(); });
}

} // namespace velmora
