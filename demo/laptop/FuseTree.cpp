// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FuseTree.h"

#define FUSE_USE_VERSION 35
#include <fuse3/fuse.h>
#include <fuse3/fuse_log.h>
#include <fuse3/fuse_lowlevel.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velmora {

namespace {

constexpr int servers = 8;       // held writes occupy one each, and must hold up nobody else
constexpr off_t pageSize = 4096; // what sysfs claims for each file

std::mutex saidMutex;
std::string said; // by the library, last

/// The library speaks to standard error; what it says is kept for `whyNot` in its place.
void listen(fuse_log_level, const char* format, va_list arguments)
{
    std::array<char, 256> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    const std::lock_guard guard(saidMutex);
    said = text.data();
    while (said.ends_with('\n')) said.pop_back();
}

std::string lastSaid()
{
    const std::lock_guard guard(saidMutex);
    return said.empty() ? "the file system could not be mounted" : said;
}

/// Writes a word into a file, whatever comes of it: nobody waits for the answer.
void write(const std::filesystem::path& file, std::string_view text)
{
    const FileDescriptor opened(::open(file.c_str(), O_WRONLY | O_CLOEXEC));
    [[maybe_unused]] const auto written = ::write(opened.get(), text.data(), text.size());
}

} // namespace

/// From C with a path, into C with a negative errno; no exception leaves.
struct FuseTree::Calls {
    static FuseTree& self() { return *static_cast<FuseTree*>(fuse_get_context()->private_data); }
    static std::string inside(const char* path) { return path + 1; }

    template <auto Call, typename... Arguments>
    static int guarded(Arguments... arguments) noexcept
    try {
        return Call(arguments...);
    } catch (...) {
        return -EIO;
    }

    static int getattr(const char* path, struct stat* status, fuse_file_info*)
    {
        status->st_uid = ::geteuid();
        status->st_gid = ::getegid();
        if (self().folders_.contains(inside(path))) {
            status->st_mode = S_IFDIR | 0755;
            status->st_nlink = 2;
            return 0;
        }
        const auto [known, writable] = self().laptop_.with([&](const SimulatedLaptop& laptop) {
            return std::pair(laptop.has(inside(path)), laptop.isWritable(inside(path)));
        });
        if (!known) return -ENOENT;
        status->st_mode = static_cast<mode_t>(S_IFREG | (writable ? 0644 : 0444));
        status->st_nlink = 1;
        status->st_size = pageSize;
        return 0;
    }

    static int readdir(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, fuse_file_info*,
                       fuse_readdir_flags)
    {
        const auto folder = self().folders_.find(inside(path));
        if (folder == self().folders_.end()) return -ENOENT;
        for (const char* name : {".", ".."}) fill(buffer, name, nullptr, 0, fuse_fill_dir_flags{});
        for (const auto& name : folder->second) fill(buffer, name.c_str(), nullptr, 0, fuse_fill_dir_flags{});
        return 0;
    }

    static int open(const char* path, fuse_file_info* file)
    {
        const bool writes = (file->flags & O_ACCMODE) != O_RDONLY;
        const auto [known, writable] = self().laptop_.with([&](const SimulatedLaptop& laptop) {
            return std::pair(laptop.has(inside(path)), laptop.isWritable(inside(path)));
        });
        if (!known) return -ENOENT; // the kernel may remember it from before the driver was loaded anew
        if (writes && !writable) return -EACCES; // root, too, is told so by sysfs
        file->fh = self().laptop_.probes();
        file->direct_io = 1; // each read reaches us, whatever the size and the cache say
        return 0;
    }

    static int read(const char* path, char* buffer, std::size_t size, off_t offset, fuse_file_info* file)
    {
        if (file->fh != self().laptop_.probes()) return -ENODEV;
        const auto [bytes, error] =
            self().laptop_.with([&](const SimulatedLaptop& laptop) { return laptop.load(inside(path)); });
        if (error) return -error;
        const auto begin = std::min(static_cast<std::size_t>(std::max<off_t>(offset, 0)), bytes.size());
        const auto count = std::min(size, bytes.size() - begin);
        bytes.copy(buffer, count, begin);
        return static_cast<int>(count);
    }

    static int write(const char* path, const char* buffer, std::size_t size, off_t, fuse_file_info*)
    {
        const std::string_view text(buffer, std::min<std::size_t>(size, pageSize - 1));
        if (!inside(path).ends_with("/uevent")) self().holdWrite();
        const int error =
            self().laptop_.with([&](SimulatedLaptop& laptop) { return laptop.store(inside(path), text); });
        return error ? -error : static_cast<int>(text.size());
    }

    /// A shell opens with O_TRUNC; an attribute has no length to lose.
    static int truncate(const char*, off_t, fuse_file_info*) { return 0; }

    static const fuse_operations& table()
    {
        static const fuse_operations operations = [] {
            fuse_operations calls{};
            calls.getattr = guarded<getattr>;
            calls.readdir = guarded<readdir>;
            calls.open = guarded<open>;
            calls.read = guarded<read>;
            calls.write = guarded<write>;
            calls.truncate = guarded<truncate>;
            return calls;
        }();
        return operations;
    }
};

std::unique_ptr<FuseTree> FuseTree::mount(SharedLaptop& laptop, const TreeOptions& options,
                                          std::string& whyNot)
{
    fuse_set_log_func(listen);
    std::unique_ptr<FuseTree> tree(new FuseTree(laptop, options));
    std::string words[] = {"velmora-laptop", "-o", "default_permissions,fsname=velmora-laptop"};
    if (::geteuid() == 0) words[2] += ",allow_other"; // a user needs leave from /etc/fuse.conf for it
    char* argv[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    fuse_args arguments = FUSE_ARGS_INIT(3, argv);
    tree->fuse_ = fuse_new(&arguments, &Calls::table(), sizeof(fuse_operations), tree.get());
    fuse_opt_free_args(&arguments);
    if (!tree->fuse_ || fuse_mount(tree->fuse_, options.folder.c_str()) != 0) {
        whyNot = lastSaid();
        return nullptr;
    }
    tree->start();
    return tree;
}

FuseTree::FuseTree(SharedLaptop& laptop, const TreeOptions& options)
    : laptop_(laptop),
      folder_(std::filesystem::absolute(options.folder)),
      heldWrite_(options.heldWrite),
      ending_(::eventfd(0, EFD_CLOEXEC))
{
    auto paths = laptop_.with([](const SimulatedLaptop& shown) { return shown.paths(); });
    for (const auto& folder : laptop_.with([](const SimulatedLaptop& shown) { return shown.folders(); }))
        paths.push_back(folder + "/.");
    for (std::filesystem::path path : paths) {
        for (; !path.empty(); path = path.parent_path()) {
            auto& entries = folders_[path.parent_path()];
            if (path.filename() != ".") entries.insert(path.filename());
        }
    }
}

FuseTree::~FuseTree()
{
    {
        const std::lock_guard guard(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    if (announcer_.joinable()) announcer_.join(); // before the servers, which may owe it an answer
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(ending_.get(), &one, sizeof one);
    for (auto& server : servers_) server.join();
    if (!servers_.empty()) fuse_unmount(fuse_); // a program that waits for an answer gets an error
    if (fuse_) fuse_destroy(fuse_);
}

void FuseTree::start()
{
    const int device = fuse_session_fd(fuse_get_session(fuse_));
    ::fcntl(device, F_SETFL,
            ::fcntl(device, F_GETFL) | O_NONBLOCK); // a call wakes all servers and one gets it
    for (int count = 0; count < servers; ++count) servers_.emplace_back([this] { serve(); });
    announcer_ = std::thread([this] { announceAll(); });
}

/// A server's life. The library's own loop ends its threads by cancelling them, and a call can be lost with
/// one.
void FuseTree::serve()
{
    auto* session = fuse_get_session(fuse_);
    std::array<pollfd, 2> waiting{pollfd{fuse_session_fd(session), POLLIN, 0},
                                  pollfd{ending_.get(), POLLIN, 0}};
    fuse_buf call{};
    while (!fuse_session_exited(session)) {
        ::poll(waiting.data(), waiting.size(), -1);
        if (waiting[1].revents) break;
        const int size = fuse_session_receive_buf(session, &call);
        if (size > 0) fuse_session_process_buf(session, &call);
        if (size == 0 || size == -ENODEV) break; // unmounted by somebody else
    }
    std::free(call.mem);
}

void FuseTree::announce(const std::string& supply)
{
    {
        const std::lock_guard guard(mutex_);
        announcements_.push_back(supply);
    }
    changed_.notify_all();
}

/// On a thread of its own: it writes through the mount, which the server must answer meanwhile.
void FuseTree::announceAll()
{
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return isEnding_ || !announcements_.empty(); });
        if (isEnding_) return;
        const auto supply = std::move(announcements_.front());
        announcements_.pop_front();
        lock.unlock();
        velmora::write(folder_ / supplyPath(supply) / "uevent", "change\n");
        lock.lock();
    }
}

void FuseTree::holdWrite()
{
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, heldWrite_, [this] { return isEnding_; });
}

bool FuseTree::isDead(const std::filesystem::path& folder)
{
    struct stat status {};
    return ::stat(folder.c_str(), &status) != 0 && errno == ENOTCONN;
}

bool FuseTree::clearDead(const std::filesystem::path& folder)
{
    if (::geteuid() == 0) {
        ::umount2(folder.c_str(), MNT_DETACH);
    } else {
        std::string words[] = {"fusermount3", "-u", "-z", "-q", folder.string()};
        char* argv[] = {words[0].data(), words[1].data(), words[2].data(),
                        words[3].data(), words[4].data(), nullptr};
        pid_t child = 0;
        if (::posix_spawnp(&child, argv[0], nullptr, nullptr, argv, environ) == 0)
            ::waitpid(child, nullptr, 0);
    }
    return !isDead(folder);
}

} // namespace velmora
