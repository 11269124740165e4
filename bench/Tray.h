// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "Contender.h"
#include "Screen.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace velmora {

/// The trays of a display that has no desktop: velmora-trayhost for who speaks to it over the session bus,
/// and tint2 for who docks a window.
class Tray {
public:
    /// Both are there when it returns. Throws std::runtime_error where they do not come.
    Tray(const std::string& bin, const std::filesystem::path& folder);

    /// Waits until velmora-trayhost shows an item; nothing where none comes in time.
    std::optional<Spot> awaitItem(Nanoseconds patience);
    /// Waits until it shows none; whether that is so in time.
    bool awaitNone(Nanoseconds patience);

private:
    bool await(const std::string& start, Nanoseconds patience);
    const std::string& latest();

    std::filesystem::path said_;
    Process host_, windows_;
    std::ifstream lines_;
    std::string latest_;
};

} // namespace velmora
