// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "TrayBar.h"

#include "bus/DBus.h"

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <sys/epoll.h>
#include <utility>

namespace velmora {

namespace {

constexpr Pixel darkBar = 0xff26282c, lightBar = 0xffececee;
constexpr Pixel darkDesktop = 0xff3c4a5c, lightDesktop = 0xff9fb2c8;

template <typename T>
using Owned = Handle<T, std::free>;

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

xcb_screen_t* screenAt(xcb_connection_t* connection, int number)
{
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (number-- > 0 && screens.rem > 1) xcb_screen_next(&screens);
    return screens.data;
}

} // namespace

TrayBar::TrayBar(EventLoop& loop, bool isLight) : background_(isLight ? lightBar : darkBar)
{
    int number = 0;
    connection_.reset(xcb_connect(nullptr, &number));
    if (xcb_connection_has_error(connection_.get())) throw std::runtime_error("no X server at DISPLAY");
    screen_ = screenAt(connection_.get(), number);
    if (screen_->root_depth != 24) throw std::runtime_error("the screen's colours are not 24 bits deep");
    createWindow(isLight ? lightDesktop : darkDesktop);
    dbus::check(sd_event_add_io(loop.handle(), &source_, xcb_get_file_descriptor(connection_.get()), EPOLLIN,
                                onReadable, this),
                "sd_event_add_io");
    // What the library has read ahead makes no descriptor readable.
    sd_event_source_set_prepare(source_, [](sd_event_source*, void* self) noexcept {
        static_cast<TrayBar*>(self)->read();
        return 0;
    });
}

TrayBar::~TrayBar()
{
    sd_event_source_disable_unref(source_);
}

/// A display without a desktop has no background either.
void TrayBar::createWindow(Pixel root)
{
    auto* connection = connection_.get();
    xcb_change_window_attributes(connection, screen_->root, XCB_CW_BACK_PIXEL, &root);
    xcb_clear_area(connection, false, screen_->root, 0, 0, 0, 0);
    window_ = xcb_generate_id(connection);
    const std::array values{background_, Pixel{XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_BUTTON_PRESS}};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window_, screen_->root, 0, 0,
                      screen_->width_in_pixels, TrayLayout::barHeight, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
    context_ = xcb_generate_id(connection);
    xcb_create_gc(connection, context_, window_, 0, nullptr);
    describe();
    xcb_map_window(connection, window_);
    xcb_flush(connection);
}

/// For a window manager, should there be one: it keeps other windows off the bar.
void TrayBar::describe()
{
    const auto set = [this](std::string_view property, xcb_atom_t type, const auto& values) {
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window_,
                            atom(connection_.get(), property), type, 32,
                            static_cast<std::uint32_t>(values.size()), values.data());
    };
    constexpr std::uint32_t userPosition = 1; // USPosition: it is to stay at the top
    set("WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, std::array<std::uint32_t, 18>{userPosition});
    set("_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
        std::array{atom(connection_.get(), "_NET_WM_WINDOW_TYPE_DOCK")});
    const std::uint32_t end = screen_->width_in_pixels - 1U;
    set("_NET_WM_STRUT_PARTIAL",
        XCB_ATOM_CARDINAL, // left, right, top, bottom, and where each begins and ends
        std::array<std::uint32_t, 12>{0, 0, TrayLayout::barHeight, 0, 0, 0, 0, 0, 0, end, 0, 0});
}

void TrayBar::show(const std::vector<const TrayPicture*>& pictures)
{
    icons_.clear();
    for (const auto* picture : pictures) icons_.push_back(composed(*picture, iconSize, background_));
    xcb_clear_area(connection_.get(), false, window_, 0, 0, 0, 0);
    draw();
}

void TrayBar::draw()
{
    const TrayLayout layout{width(), icons_.size()};
    for (std::size_t i = 0; i < layout.shown(); ++i) {
        const auto [x, y] = layout.centre(i);
        const auto* data =
            reinterpret_cast<const std::uint8_t*>(icons_[i].data()); // a local server's byte order
        xcb_put_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window_, context_, iconSize, iconSize,
                      static_cast<std::int16_t>(x - iconSize / 2),
                      static_cast<std::int16_t>(y - iconSize / 2), 0, screen_->root_depth,
                      static_cast<std::uint32_t>(icons_[i].size() * sizeof(Pixel)), data);
    }
    xcb_flush(connection_.get());
}

void TrayBar::exposed()
{
    draw();
    if (const auto handler = std::exchange(onShown, nullptr)) handler();
}

void TrayBar::read()
{
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        const auto type = event->response_type & 0x7fU; // the highest bit: sent by a client
        if (type == XCB_EXPOSE) exposed();
        if (type == XCB_BUTTON_PRESS && onClick) {
            const auto* press = reinterpret_cast<const xcb_button_press_event_t*>(event.get());
            onClick(press->detail, press->root_x, press->root_y);
        }
    }
    if (!xcb_connection_has_error(connection_.get())) return;
    sd_event_source_set_enabled(source_, SD_EVENT_OFF);
    if (onLost) onLost();
}

int TrayBar::onReadable(sd_event_source*, int, std::uint32_t, void* self) noexcept
{
    static_cast<TrayBar*>(self)->read();
    return 0;
}

} // namespace velmora
