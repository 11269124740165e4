// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "account/KeychainHelper.h"

#include "base/Utf8.h"
#include "platform/Platform.h"

namespace velmora {

namespace {

SecretStore& store()
{
    return *Platform::current().secretStore;
}

} // namespace

const KeychainHelper& KeychainHelper::shared()
{
    static const KeychainHelper helper;
    return helper;
}

bool KeychainHelper::save(const std::string& value, const std::string& service,
                          const std::string& account) const
{
    if (!isUtf8(value)) return false;
    const SecretItem item{.service = service,
                          .account = account,
                          .data = value,
                          .accessibility = SecretItem::Accessibility::whenUnlockedThisDeviceOnly};
    store().remove(item);
    return store().add(item) == SecretStatus::success;
}

std::optional<std::string> KeychainHelper::read(const std::string& service, const std::string& account) const
{
    SecretItem item{.service = service, .account = account};
    if (store().copyMatching(item) != SecretStatus::success || !item.data || !isUtf8(*item.data))
        return std::nullopt;
    return item.data;
}

bool KeychainHelper::remove(const std::string& service, const std::string& account) const
{
    return store().remove({.service = service, .account = account}) == SecretStatus::success;
}

} // namespace velmora
