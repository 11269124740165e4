// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "Process.h"
#include "TemporaryFolder.h"

#include <optional>
#include <string>

namespace velmora {

/// A real secret service, gnome-keyring, with an unlocked collection of its own and nothing in it, beside the
/// program that other applications' users look into it with, secret-tool.
class Keyring {
public:
    /// Both are installed.
    static bool isInstalled();

    /// `bus` is the address of the session bus. It takes a moment until the name on it is its own.
    explicit Keyring(std::string bus);

    void start();
    void signal(int number) const { daemon_->signal(number); }
    void stop() { daemon_->terminate(); }
    /// Until it is started anew.
    void lock() const;

    /// What secret-tool finds; empty for nothing.
    std::string lookUp(const std::string& service, const std::string& account) const;
    /// Stores as another application would.
    void put(const std::string& service, const std::string& account, const std::string& secret) const;

private:
    std::string run(const std::string& command) const;

    std::string bus_;
    TemporaryFolder folder_;
    std::optional<Process> daemon_;
};

} // namespace velmora
