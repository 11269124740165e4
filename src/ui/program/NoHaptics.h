// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Haptics.h"

namespace velmora {

/// Does nothing. Linux has no haptic touchpad for programs: where the hardware has one (FF_HAPTIC), only the
/// compositor may use it.
class NoHaptics : public Haptics {
public:
    void perform(Pattern) override {}
};

} // namespace velmora
