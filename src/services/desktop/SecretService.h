// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"
#include "base/Lifetime.h"
#include "bus/DBus.h"
#include "bus/NameOwner.h"
#include "platform/MainLoop.h"
#include "platform/SecretStore.h"

#include <chrono>
#include <optional>
#include <thread>
#include <vector>

namespace velmora {

/// The secret service of the user's desktop: GNOME's keyring, KDE's wallet, KeePassXC. An item is one of the
/// default collection, with the attributes "service" and "account"; what else has them is found, too.
///
/// What the service does is only waited for, never trusted: one that hangs, asks the user for a password or
/// answers nonsense counts as unavailable.
class SecretService final : public SecretStore {
public:
    static constexpr std::chrono::milliseconds patienceOnMainThread{140};
    static constexpr std::chrono::milliseconds patience{3'000};
    static constexpr std::chrono::milliseconds patienceAtStart{10'000};

    /// `session` is the loop's own connection, for `whenReady` alone; null: none. To be made on the main
    /// thread. Throws std::system_error where the kernel gives no descriptors.
    SecretService(MainLoop& loop, sd_bus* session);

    SecretStatus add(const SecretItem& item) override;
    SecretStatus copyMatching(SecretItem& item) override;
    SecretStatus remove(const SecretItem& item) override;
    void whenReady(std::function<void()> ready) override;
    void cancel() override;

private:
    template <typename Use>
    SecretStatus with(Use use) const;
    void look();
    int answered(sd_bus_message* reply);
    void becomeReady();

    Lifetime lifetime_;
    MainLoop& loop_;
    Handle<sd_bus, sd_bus_unref> bus_; ///< null: none
    std::thread::id mainThread_ = std::this_thread::get_id();
    FileDescriptor cancelled_; ///< eventfd, readable once cancelled
    bool isReady_ = false;
    std::vector<std::function<void()>> waiting_;
    std::optional<NameOwner> owner_; ///< while somebody waits, like the next two
    dbus::Slot question_;
    MainLoop::Timer deadline_;
};

} // namespace velmora
