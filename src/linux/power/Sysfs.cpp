// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/Sysfs.h"

#include "base/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora {

namespace {

constexpr std::size_t page = 4096;

/// Reads to the end of the file. The kernel gives an attribute in one piece, a file system in user space may
/// not; both end it with a newline, behind which there is nothing to ask for.
SysfsText readAll(int fd)
{
    std::array<char, page + 1> bytes; // NOLINT: filled by read
    std::size_t size = 0;
    while (size < bytes.size()) {
        const ssize_t got = ::read(fd, bytes.data() + size, bytes.size() - size);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return {.error = errno, .text = {}};
        if (got == 0) break;
        size += static_cast<std::size_t>(got);
        if (bytes[size - 1] == '\n') break;
    }
    if (size > page) return {.error = EFBIG, .text = {}};
    std::string text(bytes.data(), size);
    if (text.ends_with('\n')) text.pop_back();
    return {.error = 0, .text = std::move(text)};
}

} // namespace

bool SysfsText::isAbsent() const
{
    return error == ENOENT || error == ENOTDIR;
}

Sysfs Sysfs::ofEnvironment()
{
    const char* root = std::getenv("VELMORA_SYSFS");
    return Sysfs(root && *root ? root : "/sys");
}

std::vector<std::string> Sysfs::list(const std::filesystem::path& folder, std::size_t limit) const
{
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator at(root_ / folder, error), end; !error && at != end;
         at.increment(error)) {
        if (names.size() == limit) break;
        names.push_back(at->path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

SysfsText Sysfs::read(const std::filesystem::path& path) const
{
    // Without O_NONBLOCK a pipe in the place of an attribute would hold us until somebody writes to it.
    const FileDescriptor file(open((root_ / path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file) return {.error = errno, .text = {}};
    struct stat what {};
    if (fstat(file.get(), &what) != 0) return {.error = errno, .text = {}};
    if (!S_ISREG(what.st_mode)) return {.error = EINVAL, .text = {}};
    return readAll(file.get());
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
