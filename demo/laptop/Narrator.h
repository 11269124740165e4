// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "SimulatedLaptop.h"

#include <string>
#include <vector>

namespace velmora {

/// Tells what a laptop does in words that its owner understands, and only what is new.
class Narrator {
public:
    /// The lines since the last call. The first call tells how things stand.
    std::vector<std::string> tell(const LaptopLook& look, const std::vector<SimulatedLaptop::Write>& writes);

private:
    struct Told {
        std::string status;
        int percent = 0; ///< last one that was worth a line
        int cycles = 0;
    };
    void tellWrite(const SimulatedLaptop::Write& write);
    void tellPlug(const LaptopLook& look);
    void tellBattery(const LaptopLook& look, const LaptopLook::Battery& battery, Told& told);
    std::string nameOf(const std::string& battery) const;

    std::vector<std::string> lines_;
    std::map<std::string, Told> told_;
    bool isFirst_ = true;
    bool hasSeveral_ = false;
    bool wasPlugged_ = false;
};

} // namespace velmora
