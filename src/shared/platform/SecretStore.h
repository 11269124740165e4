// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Wipe.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace velmora {

/// A small secret, as a desktop's password manager shows one: a generic password. Service and account are its
/// address; there is one item at each.
struct SecretItem {
    /// When it can be read, and where.
    enum class Accessibility : std::uint8_t { whenUnlockedThisDeviceOnly };

    std::string service;
    std::string account;
    std::optional<std::string> data{}; ///< the value's bytes; wiped with the item
    std::optional<Accessibility> accessibility{};

    ~SecretItem()
    {
        if (data) wipe(*data);
    }
};

enum class SecretStatus : std::uint8_t {
    success,
    notFound,
    unavailable, ///< no store, a locked one, or one that does not answer in time
};

/// The user's secrets, in a store that opens when the user logs in. No call asks the user for anything.
///
/// Calls block: at most 150 ms on the main thread, some seconds on any other.
class SecretStore {
public:
    virtual ~SecretStore() = default;

    /// Stores an item with its data. Any thread, like the next two.
    virtual SecretStatus add(const SecretItem& item) = 0;
    /// Sets `item.data` to what is stored under the item's service and account.
    virtual SecretStatus copyMatching(SecretItem& item) = 0;
    /// Removes what is stored under the item's service and account, whatever its data.
    virtual SecretStatus remove(const SecretItem& item) = 0;

    /// Calls `ready` once the store has answered for the first time, locked or not, or after 10 s: at log-in
    /// it may still be starting. Never from inside this call. Main thread only.
    virtual void whenReady(std::function<void()> ready) = 0;

    /// Ends the calls that wait on other threads, and refuses further ones: the program ends. Any thread.
    virtual void cancel() = 0;
};

} // namespace velmora
