// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/SecretFile.h"

#include "base/FileDescriptor.h"
#include "base/Wipe.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace velmora {

namespace {

using Found = std::variant<std::string, NoSecret>;

NoSecret errorNow()
{
    return {std::generic_category().message(errno)};
}

/// What is wrong with the file; empty for nothing. Of a credential systemd decides who reads it.
std::string objection(int file, bool isCredential)
{
    struct stat status {};
    if (fstat(file, &status) != 0) return errorNow().why;
    if (!S_ISREG(status.st_mode)) return "it is no regular file";
    if (isCredential) return {};
    if (status.st_uid != geteuid()) return "it belongs to another user";
    if (status.st_mode & (S_IRWXG | S_IRWXO)) return "others may use it: its mode has to be 0600";
    return {};
}

Found firstLine(int file)
{
    std::string text(longestSecret + 2, '\0');
    const auto bytes = read(file, text.data(), text.size());
    if (bytes < 0) return errorNow();
    auto line = text.substr(0, std::min(text.find_first_of("\r\n"), static_cast<std::size_t>(bytes)));
    wipe(text);
    if (!line.empty() && line.size() <= longestSecret) return line;
    const bool isEmpty = line.empty();
    wipe(line);
    return NoSecret{isEmpty ? "its first line is empty" : "its first line is too long"};
}

Found lineOf(const std::filesystem::path& path, bool isCredential)
{
    // A pipe would block without O_NONBLOCK, for ever.
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | (isCredential ? 0 : O_NOFOLLOW);
    const FileDescriptor file(open(path.c_str(), flags));
    if (!file) return errno == ELOOP ? NoSecret{"it is a link"} : errorNow();
    if (auto why = objection(file.get(), isCredential); !why.empty()) return NoSecret{std::move(why)};
    return firstLine(file.get());
}

} // namespace

Found secretIn(const std::filesystem::path& file)
{
    if (file.is_relative()) return NoSecret{"its name does not begin at the root folder"};
    return lineOf(file, false);
}

Found secretInCredential(const std::filesystem::path& file)
{
    return lineOf(file, true);
}

} // namespace velmora
