// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Screen.h"

#include "DBus.h"

#include <cstdlib>
#include <stdexcept>
#include <xcb/xtest.h>

namespace velmora {

Screen::Screen() : connection_(xcb_connect(nullptr, nullptr))
{
    auto* connection = connection_.get();
    if (xcb_connection_has_error(connection)) throw std::runtime_error("no X server at DISPLAY");
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const auto* extension = xcb_get_extension_data(connection, &xcb_test_id);
    if (!extension || !extension->present) throw std::runtime_error("the X server has no XTEST");
}

void Screen::click(Spot spot) const
{
    const auto fake = [&](std::uint8_t type, std::uint8_t detail) {
        xcb_test_fake_input(connection_.get(), type, detail, XCB_CURRENT_TIME, screen_->root,
                            static_cast<std::int16_t>(spot.x), static_cast<std::int16_t>(spot.y), 0);
    };
    fake(XCB_MOTION_NOTIFY, 0);
    fake(XCB_BUTTON_PRESS, 1);
    fake(XCB_BUTTON_RELEASE, 1);
    row({0, 0}, 1); // answered after the clicks
}

std::vector<std::uint8_t> Screen::row(Spot from, int length) const
{
    const auto cookie = xcb_get_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root,
                                      static_cast<std::int16_t>(from.x), static_cast<std::int16_t>(from.y),
                                      static_cast<std::uint16_t>(length), 1, ~0U);
    const std::unique_ptr<xcb_get_image_reply_t, dbus::Drop<std::free>> image(
        xcb_get_image_reply(connection_.get(), cookie, nullptr));
    if (!image) throw std::runtime_error("the X server shows nothing");
    const auto* bytes = xcb_get_image_data(image.get());
    return {bytes, bytes + xcb_get_image_data_length(image.get())};
}

} // namespace velmora
