// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "base/Lifetime.h"

#include <deque>
#include <functional>
#include <memory>
#include <xcb/xcb.h>

namespace velmora {

/// A connection to the X server of this machine, served by the event loop. Only the handshake of `open` waits
/// for the server. Loop's thread only; callbacks may not destroy it, but for `onLost`.
class XConnection {
public:
    /// To the display that DISPLAY names. Null where there is none, where it cannot be reached, and where it
    /// is another machine's: over the network the desktop is elsewhere.
    static std::unique_ptr<XConnection> open(EventLoop& loop);
    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    const xcb_screen_t& screen() const { return *screen_; }
    int screenNumber() const { return screenNumber_; }

    /// Calls `answered` with the reply to a request that was made with this cookie; null for an error.
    template <typename Reply, typename Cookie>
    void ask(Cookie cookie, std::function<void(const Reply*)> answered)
    {
        questions_.push_back({cookie.sequence, [answered = std::move(answered)](const void* reply) {
                                  answered(static_cast<const Reply*>(reply));
                              }});
    }

    std::function<void(const xcb_generic_event_t&)> onEvent;
    /// The loop is about to wait: the moment to draw, once for all that has happened.
    std::function<void()> onSettled;
    /// The server is gone. Called once, and nothing else is afterwards.
    std::function<void()> onLost;

private:
    struct Question {
        unsigned sequence;
        std::function<void(const void*)> answered;
    };

    XConnection(EventLoop& loop, xcb_connection_t* connection, int screenNumber);
    void read();
    bool serve(xcb_generic_event_t* (*next)(xcb_connection_t*));
    bool answer();
    void prepare();
    void lose();

    Lifetime lifetime_;
    EventLoop& loop_;
    xcb_connection_t* connection_;
    int screenNumber_;
    const xcb_screen_t* screen_;
    std::deque<Question> questions_; ///< in the order of the requests, which is that of the replies
    sd_event_source* source_ = nullptr;
};

} // namespace velmora
