// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/PasswordSource.h"

#include "base/FileDescriptor.h"
#include "base/Wipe.h"
#include "platform/Complaints.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace velmora {

namespace {

constexpr auto credentialName = "velmora-fleet-password";

using Found = std::variant<std::string, NoPassword>;

NoPassword errorNow()
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
    std::string text(longestPassword + 2, '\0');
    const auto bytes = read(file, text.data(), text.size());
    if (bytes < 0) return errorNow();
    auto line = text.substr(0, std::min(text.find_first_of("\r\n"), static_cast<std::size_t>(bytes)));
    wipe(text);
    if (!line.empty() && line.size() <= longestPassword) return line;
    const bool isEmpty = line.empty();
    wipe(line);
    return NoPassword{isEmpty ? "its first line is empty" : "its first line is too long"};
}

Found lineOf(const std::filesystem::path& path, bool isCredential)
{
    // A pipe would block without O_NONBLOCK, for ever.
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | (isCredential ? 0 : O_NOFOLLOW);
    const FileDescriptor file(open(path.c_str(), flags));
    if (!file) return errno == ELOOP ? NoPassword{"it is a link"} : errorNow();
    if (auto why = objection(file.get(), isCredential); !why.empty()) return NoPassword{std::move(why)};
    return firstLine(file.get());
}

std::filesystem::path credential()
{
    const auto* folder = std::getenv("CREDENTIALS_DIRECTORY");
    return folder && *folder == '/' ? std::filesystem::path(folder) / credentialName
                                    : std::filesystem::path();
}

} // namespace

Found passwordIn(const std::filesystem::path& file)
{
    if (file.is_relative()) return NoPassword{"its name does not begin at the root folder"};
    return lineOf(file, false);
}

RecordStores::Password passwordSource(const RecordPlace& place, RecordStores::Password kept,
                                      std::shared_ptr<Log> log)
{
    auto complaints = std::make_shared<Complaints>(*log, "PasswordSource");
    const auto taken = [log = std::move(log), complaints](const std::filesystem::path& path, Found found) {
        const auto* none = std::get_if<NoPassword>(&found);
        if (none)
            complaints->raise(path, "The password for the record server is not taken from " + path.string() +
                                        ": " + none->why + ".");
        else
            complaints->settle(path);
        return none ? std::string() : std::get<std::string>(std::move(found));
    };
    return [chosen = std::filesystem::path(place.passwordFile), kept = std::move(kept), given = credential(),
            taken]() -> std::string {
        if (!chosen.empty()) return taken(chosen, passwordIn(chosen));
        auto password = kept ? kept() : std::string();
        std::error_code error;
        if (!password.empty() || given.empty() || !std::filesystem::exists(given, error)) return password;
        return taken(given, lineOf(given, true));
    };
}

} // namespace velmora
