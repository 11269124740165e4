// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Screen.h"

#include <cstdlib>
#include <stdexcept>
#include <xcb/xtest.h>

namespace velmora {

namespace {

template <typename T>
using Reply = Handle<T, std::free>;

} // namespace

Screen::Screen() : connection_(xcb_connect(nullptr, nullptr))
{
    auto* connection = connection_.get();
    if (xcb_connection_has_error(connection)) throw std::runtime_error("no X server at DISPLAY");
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const auto* extension = xcb_get_extension_data(connection, &xcb_test_id);
    if (!extension || !extension->present) throw std::runtime_error("the X server has no XTEST");
}

std::optional<Spot> Screen::windowOf(int width, int height) const
{
    auto* connection = connection_.get();
    const Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, screen_->root), nullptr));
    if (!tree) return std::nullopt;
    const auto* windows = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        const Reply<xcb_get_geometry_reply_t> place(
            xcb_get_geometry_reply(connection, xcb_get_geometry(connection, windows[i]), nullptr));
        const Reply<xcb_get_window_attributes_reply_t> looks(xcb_get_window_attributes_reply(
            connection, xcb_get_window_attributes(connection, windows[i]), nullptr));
        if (place && looks && looks->map_state == XCB_MAP_STATE_VIEWABLE && place->width == width &&
            place->height == height)
            return Spot{place->x, place->y};
    }
    return std::nullopt;
}

void Screen::fake(std::uint8_t type, std::uint8_t detail, Spot spot) const
{
    xcb_test_fake_input(connection_.get(), type, detail, XCB_CURRENT_TIME, screen_->root,
                        static_cast<std::int16_t>(spot.x), static_cast<std::int16_t>(spot.y), 0);
}

void Screen::movePointer(Spot spot) const
{
    fake(XCB_MOTION_NOTIFY, 0, spot);
    xcb_flush(connection_.get());
}

void Screen::click(Spot spot) const
{
    fake(XCB_MOTION_NOTIFY, 0, spot);
    fake(XCB_BUTTON_PRESS, 1, spot);
    fake(XCB_BUTTON_RELEASE, 1, spot);
    row({0, 0}, 1); // answered after the clicks
}

std::vector<std::uint8_t> Screen::row(Spot from, int length) const
{
    const auto cookie = xcb_get_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root,
                                      static_cast<std::int16_t>(from.x), static_cast<std::int16_t>(from.y),
                                      static_cast<std::uint16_t>(length), 1, ~0U);
    const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(connection_.get(), cookie, nullptr));
    if (!image) throw std::runtime_error("the X server shows nothing");
    const auto* bytes = xcb_get_image_data(image.get());
    return {bytes, bytes + xcb_get_image_data_length(image.get())};
}

} // namespace velmora
