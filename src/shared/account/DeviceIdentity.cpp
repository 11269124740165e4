// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "account/DeviceIdentity.h"

#include "account/KeychainHelper.h"
#include "base/Text.h"
#include "base/Uuid.h"
#include "base/WholeFile.h"
#include "platform/Platform.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

namespace fs = std::filesystem;
constexpr auto category = "DeviceIdentity";

bool isUuid(std::string_view text)
{
    constexpr std::string_view pattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    return std::ranges::equal(text, pattern, [](char one, char wanted) {
        return wanted == '-' ? one == '-' : std::isxdigit(static_cast<unsigned char>(one)) != 0;
    });
}

std::optional<std::string> uuidIn(const std::optional<std::string>& text)
{
    if (!text || !isUuid(trimmed(*text))) return std::nullopt;
    return trimmed(*text);
}

/// Whole at every moment, and never readable to others.
bool writePrivately(const fs::path& file, const std::string& text)
{
    const fs::path temporary = file.string() + ".new";
    std::error_code error;
    makePrivateFolder(file.parent_path());
    fs::remove(temporary, error);
    if (!writeWholeFile(temporary, "")) return false;
    fs::permissions(temporary, fs::perms::owner_read | fs::perms::owner_write, error);
    if (error || !writeWholeFile(temporary, text)) return false;
    fs::rename(temporary, file, error);
    return !error;
}

/// Nobody knows what an identity that cannot be read says, so that no new one may take its place.
void refuseToReplace(const fs::path& file)
{
    std::error_code error;
    if (fs::symlink_status(file, error).type() == fs::file_type::not_found || readWholeFile(file)) return;
    throw std::system_error(std::make_error_code(std::errc::io_error), "could not read " + file.string());
}

/// The file holds what it should; a backup may have brought it back readable to others.
void makePrivate(const fs::path& file, Log& log)
{
    constexpr auto ownersAlone = fs::perms::owner_read | fs::perms::owner_write;
    std::error_code error;
    if (fs::status(file, error).permissions() == ownersAlone) return;
    fs::permissions(file, ownersAlone, error);
    if (error)
        log.warning(category, "Could not make " + file.string() + " readable to its owner alone (" +
                                  error.message() + "): it stays as it is.");
}

/// What store and file say, brought to agree. Throws std::system_error where there is none yet and no random
/// numbers for one, or where the file cannot be read and the store does not have it.
std::string agreedUuid(const fs::path& file, Log& log)
{
    const auto& keychain = KeychainHelper::shared();
    const auto stored = uuidIn(keychain.read(DeviceIdentity::service, DeviceIdentity::account));
    const auto filed = file.empty() ? std::nullopt : uuidIn(readWholeFile(file));
    if (!stored && !filed) refuseToReplace(file);
    std::string uuid = stored ? *stored : filed ? *filed : makeUuid();
    if (!stored && !keychain.save(uuid, DeviceIdentity::service, DeviceIdentity::account))
        log.info(category, "The secret store takes nothing, being locked, absent or slow: this machine's "
                           "identity is kept in a file alone.");
    if (filed == uuid)
        makePrivate(file, log);
    else if (!file.empty() && !writePrivately(file, uuid + "\n"))
        log.warning(category, "Could not write " + file.string() +
                                  ": without the secret store this machine would count as a new one.");
    return uuid;
}

} // namespace

DeviceIdentity& DeviceIdentity::shared()
{
    return Platform::current().singleton<DeviceIdentity>();
}

DeviceIdentity::DeviceIdentity()
    : loop_(Platform::current().mainLoop),
      log_(Platform::current().log),
      store_(Platform::current().secretStore),
      queue_(Platform::current().makeWorkQueue("velmora-ident"))
{
    const auto& folders = Platform::current().applicationSupportDirectories;
    if (!folders.empty()) file_ = folders.front() / "Velmora" / fileName;
    store_->whenReady(lifetime_.guard([this] { find(); }));
}

DeviceIdentity::~DeviceIdentity()
{
    store_->cancel(); // or its answer would be waited for
}

void DeviceIdentity::find()
{
    queue_->async([loop = loop_, log = log_, file = file_,
                   tell = lifetime_.guard([this](const std::string& uuid) { found(uuid); })] {
        try {
            loop->post([tell, uuid = agreedUuid(file, *log)] { tell(uuid); });
        } catch (const std::system_error& failure) {
            log->error(category, std::string("This machine gets no identity: ") + failure.what() + ".");
        }
    });
}

void DeviceIdentity::found(const std::string& uuid)
{
    uuid_ = uuid;
    queue_.reset(); // and its thread
    for (auto& known : std::exchange(waiting_, {})) known(uuid);
}

void DeviceIdentity::whenKnown(std::function<void(const std::string&)> known)
{
    if (uuid_.empty()) return waiting_.push_back(std::move(known));
    loop_->post(lifetime_.guard([this, known = std::move(known)] { known(uuid_); }));
}

} // namespace velmora
