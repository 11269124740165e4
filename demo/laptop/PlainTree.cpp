// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "PlainTree.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <system_error>

namespace velmora {

namespace fs = std::filesystem;

namespace {

constexpr auto staging =
    ".velmora-laptop"; // new contents until they are renamed into place; also says whose this is

FileDescriptor checked(int descriptor, const char* what)
{
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), what);
    return FileDescriptor(descriptor);
}

std::string contents(const fs::path& file)
{
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

void write(const fs::path& file, const std::string& bytes)
{
    std::ofstream(file, std::ios::binary) << bytes;
}

/// In place, so that who watches this very file is told; never empty meanwhile.
void rewrite(const fs::path& file, const std::string& bytes)
{
    const FileDescriptor opened(::open(file.c_str(), O_WRONLY | O_CLOEXEC));
    if (!opened || ::write(opened.get(), bytes.data(), bytes.size()) < 0) return;
    [[maybe_unused]] const int cut = ::ftruncate(opened.get(), static_cast<off_t>(bytes.size()));
}

bool isEvent(std::string_view path)
{
    return path.ends_with("/uevent");
}

} // namespace

PlainTree::PlainTree(SharedLaptop& laptop, const TreeOptions& options)
    : laptop_(laptop),
      folder_(options.folder),
      watcher_(checked(::inotify_init1(IN_CLOEXEC), "inotify")),
      ending_(checked(::eventfd(0, EFD_CLOEXEC), "eventfd"))
{
    fs::create_directories(folder_ / staging);
    for (const auto& folder : laptop_.with([](const SimulatedLaptop& shown) { return shown.folders(); }))
        fs::create_directories(folder_ / folder);
    for (const auto& path : laptop_.with([](const SimulatedLaptop& shown) { return shown.paths(); }))
        lay(path);
    thread_ = std::thread([this] { takeWrites(); });
}

PlainTree::~PlainTree()
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(ending_.get(), &one, sizeof one);
    thread_.join();
    clear(folder_);
}

void PlainTree::lay(const std::string& path)
{
    fs::create_directories((folder_ / path).parent_path());
    const auto [loaded, writable] = laptop_.with(
        [&](const SimulatedLaptop& laptop) { return std::pair(laptop.load(path), laptop.isWritable(path)); });
    if (loaded.error) {
        fs::create_symlink("/proc/self/mem", folder_ / path);
        return;
    }
    replace(path, loaded.bytes);
    shown_[path] = loaded.bytes;
    if (writable && !isEvent(path)) watch(path);
}

/// Watches the folder rather than the file, which is another one after each change.
void PlainTree::watch(const std::string& path)
{
    const auto folder = fs::path(path).parent_path();
    const int added = ::inotify_add_watch(watcher_.get(), (folder_ / folder).c_str(), IN_CLOSE_WRITE);
    if (added < 0) throw std::system_error(errno, std::generic_category(), "inotify");
    watched_[added] = folder;
}

void PlainTree::refresh()
{
    const std::lock_guard guard(mutex_);
    for (auto& shown : shown_) {
        const auto& path = shown.first;
        auto now = laptop_.with([&](const SimulatedLaptop& laptop) { return laptop.load(path).bytes; });
        if (now == shown.second || isEvent(path)) continue;
        replace(path, now);
        shown.second = std::move(now);
    }
}

void PlainTree::announce(const std::string& supply)
{
    refresh();
    const auto path = supplyPath(supply) + "/uevent";
    rewrite(folder_ / path,
            laptop_.with([&](const SimulatedLaptop& laptop) { return laptop.load(path).bytes; }));
}

void PlainTree::replace(const std::string& path, const std::string& bytes)
{
    const auto fresh = folder_ / staging / "fresh";
    write(fresh, bytes);
    const bool writable =
        laptop_.with([&](const SimulatedLaptop& laptop) { return laptop.isWritable(path); });
    ::chmod(fresh.c_str(), writable ? 0644 : 0444);
    fs::rename(fresh, folder_ / path);
}

/// The watching thread's life.
void PlainTree::takeWrites()
{
    alignas(inotify_event) std::array<char, 4096> buffer{};
    std::array<pollfd, 2> waiting{pollfd{watcher_.get(), POLLIN, 0}, pollfd{ending_.get(), POLLIN, 0}};
    while (true) {
        ::poll(waiting.data(), waiting.size(), -1);
        if (waiting[1].revents) return;
        const auto size = ::read(watcher_.get(), buffer.data(), buffer.size());
        for (std::ptrdiff_t at = 0; at < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            at += static_cast<std::ptrdiff_t>(sizeof *event + event->len);
            const auto folder = watched_.find(event->wd);
            if (folder != watched_.end() && event->len > 0) takeWrite(folder->second + "/" + event->name);
        }
    }
}

/// Somebody has closed a file after writing; our own changes arrive by rename and so never come here.
void PlainTree::takeWrite(const std::string& path)
{
    const std::lock_guard guard(mutex_);
    const auto shown = shown_.find(path);
    if (shown == shown_.end() || isEvent(path)) return;
    const auto text = contents(folder_ / path);
    laptop_.with([&](SimulatedLaptop& laptop) { return laptop.store(path, text); });
    shown->second = laptop_.with([&](const SimulatedLaptop& laptop) { return laptop.load(path).bytes; });
    if (text != shown->second) replace(path, shown->second);
}

bool PlainTree::isOurs(const fs::path& folder)
{
    return fs::is_directory(folder / staging);
}

void PlainTree::clear(const fs::path& folder)
{
    std::error_code ignored;
    for (const char* shown : {"bus", "class", "module"}) fs::remove_all(folder / shown, ignored);
    fs::remove_all(folder / staging, ignored);
}

} // namespace velmora
