// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>

namespace velmora {

/// A touchpad with haptic feedback.
class Haptics {
public:
    enum class Pattern : std::uint8_t {
        generic,
        alignment,   ///< something snapped into place
        levelChange, ///< a step on a scale of levels
    };

    virtual ~Haptics() = default;

    /// Taps now, if the device can; never waits for it.
    virtual void perform(Pattern pattern) = 0;
};

} // namespace velmora
