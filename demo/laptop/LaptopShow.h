// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "LaptopTree.h"
#include "Narrator.h"

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace velmora {

/// A simulated laptop on show: keeps its tree up to date, announces its changes no faster than one in two
/// seconds, tells its story line by line and takes its owner's commands. Its time is given to it.
class LaptopShow {
public:
    using Tell = std::function<void(const std::string& line)>;

    static constexpr std::chrono::milliseconds quietTime{2000};

    LaptopShow(SharedLaptop& laptop, LaptopTree& tree, double speed, Tell tell);

    /// So much of real time has passed; `speed` times as much passes for the laptop.
    void pass(std::chrono::milliseconds time);

    /// "plug", "unplug", "load WATTS", "level PERCENT", "heat DEGREES" of the batteries, "heat off", "cycle"
    /// or "quit"; anything else is told to be none of these. Whether the show goes on.
    bool command(std::string_view line);

private:
    bool obey(std::string_view verb, std::string_view argument);
    void follow();
    void announce();

    SharedLaptop& laptop_;
    LaptopTree& tree_;
    double speed_;
    Tell tell_;
    Narrator narrator_;
    std::chrono::milliseconds sinceAnnouncement_ = quietTime;
};

/// A finite number within bounds that is all of `text`.
bool parseNumber(std::string_view text, double lowest, double highest, double& number);

} // namespace velmora
