// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/XConnection.h"

#include "base/Handle.h"

#include <cstdlib>
#include <string_view>
#include <sys/epoll.h>
#include <utility>
#include <xcb/xcbext.h>

namespace velmora {

namespace {

template <typename T>
using Owned = Handle<T, std::free>;

bool isLocal(const char* display)
{
    const std::string_view name = display ? display : "";
    return name.starts_with(':') || name.starts_with("unix:");
}

const xcb_screen_t* screenAt(const xcb_setup_t* setup, int number)
{
    auto screens = xcb_setup_roots_iterator(setup);
    while (screens.rem > 1 && number-- > 0) xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

} // namespace

std::unique_ptr<XConnection> XConnection::open(EventLoop& loop)
{
    if (!isLocal(std::getenv("DISPLAY"))) return nullptr;
    int screen = 0;
    auto* connection = xcb_connect(nullptr, &screen);
    const bool works = !xcb_connection_has_error(connection) && screenAt(xcb_get_setup(connection), screen);
    if (works) return std::unique_ptr<XConnection>(new XConnection(loop, connection, screen));
    xcb_disconnect(connection);
    return nullptr;
}

XConnection::XConnection(EventLoop& loop, xcb_connection_t* connection, int screenNumber)
    : loop_(loop),
      connection_(connection),
      screenNumber_(screenNumber),
      screen_(screenAt(xcb_get_setup(connection), screenNumber))
{
    sd_event_add_io(
        loop.handle(), &source_, xcb_get_file_descriptor(connection_), EPOLLIN,
        [](sd_event_source*, int, std::uint32_t, void* self) noexcept {
            static_cast<XConnection*>(self)->read();
            return 0;
        },
        this);
    // The library reads ahead: what it holds already makes no descriptor readable.
    sd_event_source_set_prepare(source_, [](sd_event_source*, void* self) noexcept {
        static_cast<XConnection*>(self)->prepare();
        return 0;
    });
}

XConnection::~XConnection()
{
    sd_event_source_disable_unref(source_);
    xcb_disconnect(connection_);
}

/// Whether there was anything.
bool XConnection::serve(xcb_generic_event_t* (*next)(xcb_connection_t*))
{
    bool served = false;
    while (const Owned<xcb_generic_event_t> event{next(connection_)}) {
        served = true;
        if (event->response_type != 0 && onEvent) onEvent(*event); // 0: an error, of a window that is gone
    }
    return served;
}

bool XConnection::answer()
{
    bool answered = false;
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    while (!questions_.empty() &&
           xcb_poll_for_reply(connection_, questions_.front().sequence, &reply, &error)) {
        const Owned<void> ownedReply(reply);
        const Owned<xcb_generic_error_t> ownedError(error);
        const auto question = std::move(questions_.front());
        questions_.pop_front();
        question.answered(reply);
        answered = true;
    }
    return answered;
}

void XConnection::read()
{
    serve(xcb_poll_for_event);
    if (xcb_connection_has_error(connection_)) lose();
}

void XConnection::prepare()
{
    do {
        if (onSettled) onSettled();
        xcb_flush(connection_);
    } while (serve(xcb_poll_for_queued_event) || answer());
    if (xcb_connection_has_error(connection_)) lose();
}

/// Called from the loop, since the handler destroys this.
void XConnection::lose()
{
    sd_event_source_set_enabled(source_, SD_EVENT_OFF);
    loop_.post(lifetime_.guard([this] {
        if (const auto handler = std::exchange(onLost, nullptr)) handler();
    }));
}

} // namespace velmora
