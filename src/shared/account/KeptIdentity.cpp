// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "account/KeptIdentity.h"

#include "account/KeychainHelper.h"

namespace velmora {

KeptIdentity::Look KeptIdentity::read(SecretStore& store)
{
    // The helper does not say whether there is nothing, or nobody who answers.
    SecretItem item{.service = keychainService, .account = userIDKey};
    const auto status = store.copyMatching(item);
    if (status != SecretStatus::success || !item.data) return {.status = status};
    const auto& keychain = KeychainHelper::shared();
    const auto user = keychain.read(keychainService, userIDKey);
    if (!user) return {};
    return {.status = status,
            .identity = {.user = *user,
                         .name = keychain.read(keychainService, displayNameKey),
                         .email = keychain.read(keychainService, emailKey)}};
}

bool KeptIdentity::save(SecretStore& store) const
{
    if (remove(store).status == SecretStatus::unavailable) return false;
    const auto& keychain = KeychainHelper::shared();
    if (!keychain.save(user, keychainService, userIDKey)) return false;
    if (name) keychain.save(*name, keychainService, displayNameKey);
    if (email) keychain.save(*email, keychainService, emailKey);
    return true;
}

KeptIdentity::Look KeptIdentity::remove(SecretStore& store)
{
    auto found = read(store);
    for (const auto* account :
         {displayNameKey, emailKey, userIDKey}) // the one that the others belong to goes last
        if (found.status != SecretStatus::unavailable &&
            store.remove({.service = keychainService, .account = account}) == SecretStatus::unavailable)
            found.status = SecretStatus::unavailable;
    if (found.status == SecretStatus::success) found.status = SecretStatus::notFound;
    return found;
}

} // namespace velmora
