// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "base/Handle.h"
#include "base/Lifetime.h"
#include "base/Spawn.h"
#include "platform/Log.h"

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <string>

namespace velmora {

/// Opens pages in the user's browser, by xdg-open. That may return at once, or stay for as long as the
/// browser runs: nobody waits for it, and it outlives this program. Made and destroyed on the main thread.
class Browser {
public:
    /// One that fails later than this has had the page open.
    static constexpr std::chrono::seconds latestFailure{20};

    /// The loop must outlive this.
    Browser(EventLoop& loop, std::shared_ptr<Log> log);
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    /// False where it could not be started; the log says why. `failed` is called where it ends with a
    /// failure, on the main thread. With the anchor, which the desktop gave for a click, its window may take
    /// the focus. Any thread.
    bool open(const std::string& url, const std::string& anchor, std::function<void()> failed);

private:
    struct Run;

    void watch(const std::shared_ptr<Run>& run);
    static int onEnd(sd_event_source*, int, std::uint32_t, void* run) noexcept;

    Lifetime lifetime_;
    EventLoop& loop_;
    std::shared_ptr<Log> log_;
    std::list<std::shared_ptr<Run>> runs_; ///< whose end has not been seen
};

} // namespace velmora
