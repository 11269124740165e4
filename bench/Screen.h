// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Handle.h"

#include <cstdint>
#include <optional>
#include <vector>
#include <xcb/xcb.h>

namespace velmora {

struct Spot {
    int x, y; ///< pixels of the screen
};

/// The display that DISPLAY names, as somebody who sits before it has it: a pointer and eyes.
class Screen {
public:
    /// Throws std::runtime_error where there is none, or none that lets a program move the pointer.
    Screen();

    int width() const { return screen_->width_in_pixels; }
    int height() const { return screen_->height_in_pixels; }
    /// Where the visible window of this size is; nothing where there is none.
    std::optional<Spot> windowOf(int width, int height) const;

    void movePointer(Spot spot) const;
    /// Presses and releases the left button there; the server has had both when this returns.
    void click(Spot spot) const;
    /// A row of pixels, as they are shown now.
    std::vector<std::uint8_t> row(Spot from, int length) const;

private:
    void fake(std::uint8_t type, std::uint8_t detail, Spot spot) const;

    Handle<xcb_connection_t, xcb_disconnect> connection_;
    xcb_screen_t* screen_;
};

} // namespace velmora
