// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/Sysfs.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace velmora {

namespace {
constexpr std::size_t page = 4096;
}

bool SysfsText::isAbsent() const
{
    return error == ENOENT || error == ENOTDIR;
}

Sysfs Sysfs::ofEnvironment()
{
    const char* root = std::getenv("VELMORA_SYSFS");
    return Sysfs(root && *root ? root : "/sys");
}

FileDescriptor openAttribute(int folder, const char* name)
{
    // Without O_NONBLOCK a pipe in the place of an attribute would hold us until somebody writes to it.
    FileDescriptor file(openat(folder, name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat what {};
    if (!file || (fstat(file.get(), &what) == 0 && S_ISREG(what.st_mode))) return file;
    file = FileDescriptor();
    errno = EINVAL;
    return file;
}

/// The kernel gives an attribute in one piece, a file system in user space may not; both end it with a
/// newline, behind which there is nothing to ask for.
SysfsText readAttribute(int file)
{
    std::array<char, page + 1> bytes; // NOLINT: filled by pread
    std::size_t size = 0;
    while (size < bytes.size()) {
        const ssize_t got = pread(file, bytes.data() + size, bytes.size() - size, static_cast<off_t>(size));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return {.error = errno, .text = {}};
        if (got == 0) break;
        size += static_cast<std::size_t>(got);
        if (bytes[size - 1] == '\n') break;
    }
    if (size > page) return {.error = EFBIG, .text = {}};
    if (size > 0 && bytes[size - 1] == '\n') --size;
    return {.error = 0, .text = std::string(bytes.data(), size)};
}

bool isOnSysfs(int file)
{
    struct statfs system {};
    return fstatfs(file, &system) == 0 && system.f_type == SYSFS_MAGIC;
}

std::optional<std::int64_t> parseInteger(std::string_view text)
{
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return number;
}

} // namespace velmora
