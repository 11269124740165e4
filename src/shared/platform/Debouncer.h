// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/MainLoop.h"

namespace velmora {

/// Runs a task once things have been quiet for a while: each `poke` restarts the wait. One thread only.
class Debouncer {
public:
    Debouncer(MainLoop& loop, std::chrono::milliseconds quiet, MainLoop::Task task);

    void poke();

private:
    MainLoop& loop_;
    std::chrono::milliseconds quiet_;
    MainLoop::Task task_;
    MainLoop::Timer timer_;
};

} // namespace velmora
