// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// One conversation with the desktop's secret service (org.freedesktop.secrets), on a connection of its own:
/// made, used and dropped within one call, on any thread. The bus starts the service where it knows how. No
/// call makes it ask the user for anything, and only what is unlocked is found.
///
/// Secrets travel unencrypted. The bus is the user's own, and a program that can listen there can ask the
/// service for the same secrets.
///
/// All functions throw std::system_error where the service refuses, answers with something else than it
/// should, or has not answered by the deadline.
class SecretSession {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr auto serviceName = "org.freedesktop.secrets";
    static constexpr auto servicePath = "/org/freedesktop/secrets";
    static constexpr auto serviceInterface = "org.freedesktop.Secret.Service";
    static constexpr std::size_t maximumItems = 16;     ///< of one address; further ones are passed over
    static constexpr std::size_t maximumBytes = 65'536; ///< of a secret; a larger one is an error

    /// Waiting ends at the deadline, or once `cancelled`, a descriptor, can be read.
    SecretSession(Clock::time_point deadline, int cancelled);

    /// The items with these attributes. Throws where there are such, but all are locked.
    std::vector<std::string> find(const std::string& service, const std::string& account);

    /// Whether what is not found may be in the default collection all the same.
    bool isLocked();

    std::string secretOf(const std::string& item);
    /// Whether it was stored, in place of one with the same attributes.
    bool store(const std::string& service, const std::string& account, std::string_view secret);
    /// Whether it is gone.
    bool remove(const std::string& item);

private:
    dbus::Message newCall(const char* path, const char* interface, const char* member) const;
    dbus::Message ask(const dbus::Message& call);
    void waitForBus() const;
    /// Empty until the first secret travels.
    const std::string& session();

    Clock::time_point deadline_;
    int cancelled_;
    dbus::Bus bus_;
    std::string session_;
};

} // namespace velmora
