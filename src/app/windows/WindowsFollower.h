// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/NameOwner.h"
#include "platform/MainLoop.h"

#include <functional>

namespace velmora {

/// Asks for what windows show, for as long as one is open: when their program appears on the session bus, and
/// each minute until it goes with the last of them. Loop's thread only.
class WindowsFollower {
public:
    /// Loop and bus must outlive the object. Throws std::system_error where the connection is gone.
    WindowsFollower(MainLoop& loop, sd_bus* bus, std::function<void()> ask);

private:
    MainLoop& loop_;
    std::function<void()> ask_;
    MainLoop::Timer asking_; ///< while a window is open
    NameOwner program_;
};

} // namespace velmora
