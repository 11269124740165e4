// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/Debouncer.h"

#include <utility>

namespace velmora {

Debouncer::Debouncer(MainLoop& loop, std::chrono::milliseconds quiet, MainLoop::Task task)
    : loop_(loop), quiet_(quiet), task_(std::move(task))
{
}

void Debouncer::poke()
{
    timer_ = loop_.after(quiet_, [this] {
        const auto spent = std::exchange(timer_, nullptr);
        task_();
    });
}

} // namespace velmora
