// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/SecretStore.h"

#include <optional>
#include <string>

namespace velmora {

/// Who has signed in, as the user's secret store keeps it in three items. Calls block as those of the store
/// do, and ask no more of one that has not answered. Any thread while a platform is installed.
struct KeptIdentity {
    static constexpr auto keychainService = "app.velmora.appleauth";
    static constexpr auto userIDKey = "apple_user_id";
    static constexpr auto displayNameKey = "apple_display_name";
    static constexpr auto emailKey = "apple_email";

    std::string user{};
    std::optional<std::string> name{};
    std::optional<std::string> email{};

    struct Look;
    static Look read(SecretStore& store);

    /// Whether it is kept. What was there of another user goes.
    bool save(SecretStore& store) const;

    /// Removes what is there, and tells who it was: `notFound` once nothing is left.
    static Look remove(SecretStore& store);
};

struct KeptIdentity::Look {
    SecretStatus status = SecretStatus::notFound;
    KeptIdentity identity{}; ///< empty where it could not be read
};

} // namespace velmora
