// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// The file `charge_types` of a battery: what a driver offers, with brackets around what is chosen. Where
/// "Custom" is among it, as with dell-laptop, the thresholds are obeyed in that one alone.
class ChargeTypes {
public:
    /// Of the text that the file shows; empty for a battery without the file.
    explicit ChargeTypes(std::string_view shown = {});

    /// A write as the driver would take it: 0, or EINVAL for what is not offered.
    int store(std::string_view text);

    std::string text() const;
    bool obeyThresholds() const;
    /// "Long_Life": firmware holds a level of its own.
    bool offerLongLife() const;
    bool areLongLife() const;

private:
    std::vector<std::string> offered_;
    std::string chosen_;
};

} // namespace velmora
