// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "Process.h"
#include "TemporaryFolder.h"

#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// A real notification server, dunst, on a display of its own. What it displays stays until it is closed.
class Dunst {
public:
    /// One notice as it was displayed.
    struct Shown {
        std::string application{}, title{}, body{}, urgency{}, desktopEntry{};
    };

    /// It and the display server are installed.
    static bool isInstalled();

    /// `bus` is the address of the session bus. It takes a moment until the name on it is its own.
    explicit Dunst(std::string bus);

    void start();
    /// The program that `start` runs, for a bus that starts it.
    std::string program() const { return folder_.path() / "server"; }
    void signal(int number) const { server_->signal(number); }
    void stop() { server_->terminate(); }

    /// All that was displayed since the first start, replaced and closed ones included.
    std::vector<Shown> shown() const;
    /// How many notices are on the screen now; -1 where no server answers.
    int displayed() const;
    /// Do not disturb.
    void pause(bool isPaused) const;
    /// As a person clicks on the newest notice.
    void click() const;

private:
    int run(const std::string& command) const;

    std::string bus_;
    TemporaryFolder folder_;
    std::optional<Process> display_, server_;
};

} // namespace velmora
