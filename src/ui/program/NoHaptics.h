// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Haptics.h"

namespace velmora {

/// Linux gives programs no touchpad that taps: where one does (FF_HAPTIC), the device is the compositor's
/// alone.
class NoHaptics : public Haptics {
public:
    void perform(Pattern) override {}
};

} // namespace velmora
