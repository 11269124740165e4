// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/PowerSupplyMonitor.h"

#include "base/FileDescriptor.h"

#include <algorithm>
#include <fcntl.h>
#include <string_view>
#include <sys/epoll.h>
#include <sys/inotify.h>
#include <system_error>
#include <utility>

namespace velmora {

namespace fs = std::filesystem;

namespace {

constexpr auto category = "PowerSupplyMonitor";
constexpr std::size_t maximumSupplies = 256;

/// From the root down to the folder of all supplies: each may come, go and be replaced.
const fs::path chain[] = {"", "class", "class/power_supply"};

bool isInChain(const fs::path& folder)
{
    return std::ranges::find(chain, folder) != std::end(chain);
}

bool isWithin(const fs::path& path, const fs::path& folder)
{
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

} // namespace

PowerSupplyMonitor::PowerSupplyMonitor(EventLoop& loop, const Sysfs& sysfs, Log& log,
                                       std::chrono::milliseconds secondLook, std::chrono::milliseconds pause)
    : loop_(loop),
      log_(log),
      complaints_(log, category),
      root_(fs::absolute(sysfs.root()).lexically_normal()),
      isKernels_(sysfs.isKernels()),
      secondLook_(secondLook),
      pause_(pause)
{
    if (!root_.has_filename()) root_ = root_.parent_path(); // of a final slash
}

PowerSupplyMonitor::~PowerSupplyMonitor() = default;

Subscription PowerSupplyMonitor::observe(std::function<void(SupplyNews)> changed)
{
    if (!settled_) listen();
    return changes_.observe(std::move(changed));
}

void PowerSupplyMonitor::listen()
{
    int result = sd_event_add_defer(loop_.handle(), out(settled_), onSettled, this);
    if (result >= 0) result = sd_event_source_set_enabled(settled_.get(), SD_EVENT_OFF);
    if (result >= 0) result = sd_event_source_set_priority(settled_.get(), SD_EVENT_PRIORITY_NORMAL + 10);
    if (result >= 0 && isKernels_) result = listenToDevices();
    if (result < 0) {
        log_.warning(category, "Cannot monitor power supplies: " + std::generic_category().message(-result) +
                                   "; looking at them at intervals only.");
    } else if (!isKernels_) {
        listenToMounts(); // first: one may come right now
        watchTree();
        if (watches_.empty())
            log_.warning(category,
                         "Cannot monitor power supplies until there is a tree at " + root_.string() + ".");
    }
}

int PowerSupplyMonitor::listenToDevices()
{
    int result = sd_device_monitor_new(out(devices_));
    auto* const monitor = devices_.get();
    if (result >= 0) {
        result = sd_device_monitor_filter_add_match_subsystem_devtype(monitor, "power_supply", nullptr);
    }
    if (result >= 0) result = sd_device_monitor_attach_event(monitor, loop_.handle());
    return result < 0 ? result : sd_device_monitor_start(monitor, onDevice, this);
}

int PowerSupplyMonitor::onDevice(sd_device_monitor*, sd_device*, void* self) noexcept
{
    static_cast<PowerSupplyMonitor*>(self)->notice();
    return 0;
}

/// inotify does not see that something is mounted on a folder that it watches.
void PowerSupplyMonitor::listenToMounts()
{
    FileDescriptor table(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
    if (!table) return; // a tree may still be made
    if (sd_event_add_io(loop_.handle(), out(mounts_), table.get(), EPOLLPRI, onMount, this) < 0) return;
    sd_event_source_set_io_fd_own(mounts_.get(), true);
    (void)table.release();
}

int PowerSupplyMonitor::onMount(sd_event_source*, int, std::uint32_t, void* self) noexcept
{
    auto* monitor = static_cast<PowerSupplyMonitor*>(self);
    const auto& supplies = chain[2];
    if (monitor->watches_.contains(supplies)) return 0;
    monitor->forget("");
    monitor->watchTree();
    if (monitor->watches_.contains(supplies)) monitor->notice();
    return 0;
}

/// Watches every folder that matters and is there now. Supplies may have come before their folder was
/// watched: the caller has to announce a change.
void PowerSupplyMonitor::watchTree()
{
    if (!watches_.contains("")) awaitRoot(); // first: the root may come right now
    for (const auto& folder : chain) watch(folder);
    if (watches_.contains("")) above_.reset();
    std::size_t supplies = 0;
    std::error_code error;
    const auto all = fs::path(chain[2]);
    for (fs::directory_iterator at(root_ / all, error), end; !error && at != end; at.increment(error)) {
        if (++supplies > maximumSupplies) break;
        watch(all / at->path().filename());
    }
}

void PowerSupplyMonitor::watch(const fs::path& folder)
{
    if (watches_.contains(folder)) return;
    const std::uint32_t events =
        isInChain(folder) ? IN_CREATE | IN_DELETE | IN_MOVE | IN_MOVE_SELF : IN_CLOSE_WRITE | IN_MOVED_TO;
    auto source = watchFor(folder.empty() ? root_ : root_ / folder, events, onFile);
    if (!source) return;
    folders_.emplace(source.get(), folder);
    watches_.emplace(folder, std::move(source));
}

/// Null where that cannot be done.
PowerSupplyMonitor::Source PowerSupplyMonitor::watchFor(const fs::path& folder, std::uint32_t events,
                                                        sd_event_inotify_handler_t handler)
{
    Source source;
    const int result =
        sd_event_add_inotify(loop_.handle(), out(source), folder.c_str(), events | IN_ONLYDIR, handler, this);
    if (result >= 0) {
        complaints_.settle(folder);
    } else if (result != -ENOENT && result != -ENOTDIR) {
        complaints_.raise(folder, "Cannot watch " + folder.string() + " for changes of power supplies: " +
                                      std::generic_category().message(-result) + ".");
    }
    return source;
}

/// Watches the nearest folder above the root that is there, for what is missing in it.
void PowerSupplyMonitor::awaitRoot()
{
    std::error_code ignored;
    fs::path next;
    do {
        next = root_;
        while (next.has_relative_path() && !fs::is_directory(next.parent_path(), ignored))
            next = next.parent_path();
        above_ =
            watchFor(next.parent_path(), IN_CREATE | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF, onAbove);
        awaited_ = next.filename();
    } while (above_ && next != root_ && fs::is_directory(next, ignored)); // it came in between
}

int PowerSupplyMonitor::onAbove(sd_event_source*, const inotify_event* event, void* self) noexcept
{
    auto* monitor = static_cast<PowerSupplyMonitor*>(self);
    const bool isOther = event->len > 0 && event->name != monitor->awaited_;
    if (isOther) return 0;
    monitor->watchTree();
    if (!monitor->watches_.empty()) monitor->notice();
    return 0;
}

/// The folder is gone, or another stands in its place: its watch sees nothing any more, nor those below it.
void PowerSupplyMonitor::forget(const fs::path& folder)
{
    std::erase_if(folders_, [&](const auto& one) { return isWithin(one.second, folder); });
    std::erase_if(watches_, [&](const auto& one) { return isWithin(one.first, folder); });
}

int PowerSupplyMonitor::onFile(sd_event_source* source, const inotify_event* event, void* self) noexcept
{
    auto* monitor = static_cast<PowerSupplyMonitor*>(self);
    const auto found = monitor->folders_.find(source);
    if (found != monitor->folders_.end()) monitor->noticeFile(fs::path(found->second), *event);
    return 0;
}

void PowerSupplyMonitor::noticeFile(const fs::path& folder, const inotify_event& event)
{
    const std::string_view name = event.len > 0 ? event.name : "";
    if (event.mask & (IN_Q_OVERFLOW | IN_UNMOUNT | IN_IGNORED | IN_MOVE_SELF)) {
        forget(folder);
        watchTree();
    } else if (isInChain(folder)) {
        forget(folder / name);
        watchTree();
    } else if (name != "uevent") {
        return;
    }
    notice();
}

void PowerSupplyMonitor::notice()
{
    using namespace std::chrono;
    const auto left = ceil<milliseconds>(pauseEnd_ - steady_clock::now());
    if (left <= milliseconds{0}) {
        sd_event_source_set_enabled(settled_.get(), SD_EVENT_ONESHOT);
    } else if (!owed_) {
        owed_ = loop_.after(left, [this] { tell(); });
    }
}

int PowerSupplyMonitor::onSettled(sd_event_source*, void* self) noexcept
{
    static_cast<PowerSupplyMonitor*>(self)->tell();
    return 0;
}

void PowerSupplyMonitor::tell()
{
    const auto spent = std::exchange(owed_, nullptr);
    again_ = loop_.after(
        secondLook_, [this] { emit(SupplyNews::secondLook); }, secondLook_ / 4);
    emit(SupplyNews::event);
}

void PowerSupplyMonitor::emit(SupplyNews news)
{
    pauseEnd_ = std::chrono::steady_clock::now() + pause_;
    changes_.emit(news);
}

} // namespace velmora
