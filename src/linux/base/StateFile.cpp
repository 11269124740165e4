// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/StateFile.h"

#include "base/FileDescriptor.h"
#include "base/WholeFile.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace velmora {

namespace {

constexpr auto category = "StateFile";

std::string message(int error)
{
    return std::generic_category().message(error);
}

bool writeAll(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t done = ::write(fd, bytes.data(), bytes.size());
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(done));
    }
    return true;
}

} // namespace

StateFile::StateFile(std::filesystem::path path, const Clock& clock, Log& log, mode_t mode)
    : path_(std::move(path)), mode_(mode), clock_(clock), log_(log), complaints_(log, category)
{
}

std::optional<std::string> StateFile::read()
{
    std::error_code error;
    const auto status = std::filesystem::status(path_, error);
    if (!std::filesystem::exists(status)) return std::nullopt;
    if (!std::filesystem::is_regular_file(status) ||
        std::filesystem::file_size(path_, error) > maximumFileBytes || error) {
        setAside("it is not a regular file of at most 16 MiB");
        return std::nullopt;
    }
    auto bytes = readWholeFile(path_);
    if (!bytes) setAside("it cannot be read");
    return bytes;
}

bool StateFile::write(std::string_view bytes)
{
    const std::filesystem::path temporary = path_.string() + ".new";
    int error = writeTemporary(temporary, bytes);
    if (error == 0 && rename(temporary.c_str(), path_.c_str()) != 0) error = errno;
    if (error == 0) error = syncFolder();
    if (error == 0) {
        complaints_.settle(path_);
        return true;
    }
    complaints_.raise(path_, "Cannot write " + path_.string() + ": " + message(error) + ".");
    return false;
}

int StateFile::writeTemporary(const std::filesystem::path& temporary, std::string_view bytes) const
{
    FileDescriptor file(
        open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, mode_));
    if (!file) return errno;
    if (!writeAll(file.get(), bytes) || fsync(file.get()) != 0) return errno;
    return file.close();
}

int StateFile::syncFolder() const
{
    const FileDescriptor folder(open(path_.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder && fsync(folder.get()) == 0 ? 0 : errno;
}

void StateFile::setAside(std::string_view why)
{
    const auto stamp = static_cast<long long>(std::llround(clock_.now().unixSeconds()));
    std::filesystem::path aside = path_.string() + ".broken-" + std::to_string(stamp);
    std::error_code error;
    for (int copy = 2; std::filesystem::exists(aside, error); ++copy) {
        aside = path_.string() + ".broken-" + std::to_string(stamp) + "-" + std::to_string(copy);
    }
    std::filesystem::rename(path_, aside, error);
    const std::string outcome =
        error ? "it cannot be set aside: " + error.message() : "set aside as " + aside.filename().string();
    log_.error(category, path_.string() + ": " + std::string(why) + "; " + outcome + ".");
}

} // namespace velmora
