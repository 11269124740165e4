// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/PasswordSource.h"

#include "base/SecretFile.h"
#include "platform/Complaints.h"

#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>
#include <variant>

namespace velmora {

namespace {

constexpr auto credentialName = "velmora-fleet-password";

using Found = std::variant<std::string, NoSecret>;

std::filesystem::path credential()
{
    const auto* folder = std::getenv("CREDENTIALS_DIRECTORY");
    return folder && *folder == '/' ? std::filesystem::path(folder) / credentialName
                                    : std::filesystem::path();
}

} // namespace

RecordStores::Password passwordSource(const RecordPlace& place, RecordStores::Password kept,
                                      std::shared_ptr<Log> log)
{
    auto complaints = std::make_shared<Complaints>(*log, "PasswordSource");
    const auto taken = [log = std::move(log), complaints](const std::filesystem::path& path, Found found) {
        const auto* none = std::get_if<NoSecret>(&found);
        if (none)
            complaints->raise(path, "The password for the record server is not taken from " + path.string() +
                                        ": " + none->why + ".");
        else
            complaints->settle(path);
        return none ? std::string() : std::get<std::string>(std::move(found));
    };
    return [chosen = std::filesystem::path(place.passwordFile), kept = std::move(kept), given = credential(),
            taken]() -> std::string {
        if (!chosen.empty()) return taken(chosen, secretIn(chosen));
        auto password = kept ? kept() : std::string();
        std::error_code error;
        if (!password.empty() || given.empty() || !std::filesystem::exists(given, error)) return password;
        return taken(given, secretInCredential(given));
    };
}

} // namespace velmora
