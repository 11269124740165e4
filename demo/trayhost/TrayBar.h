// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "TrayLayout.h"
#include "TrayPicture.h"
#include "base/EventLoop.h"
#include "base/Handle.h"

#include <cstdint>
#include <functional>
#include <vector>
#include <xcb/xcb.h>

namespace velmora {

/// The bar across the top of an X screen, and the icons at its right end. Loop's thread only.
class TrayBar {
public:
    static constexpr int iconSize = 22; ///< pixels

    /// Throws std::runtime_error where DISPLAY names no X server that shows true colours.
    TrayBar(EventLoop& loop, bool isLight);
    ~TrayBar();
    TrayBar(const TrayBar&) = delete;
    TrayBar& operator=(const TrayBar&) = delete;

    int width() const { return screen_->width_in_pixels; }

    /// Draws these items, and again whenever the server asks for it. Those that there is no room for are left
    /// out.
    void show(const std::vector<const TrayPicture*>& pictures);

    /// Called once, when it is on the screen; a window manager may take its time for that, and before it a
    /// click would go to what is below.
    std::function<void()> onShown;
    /// A button of the pointer, 1 for the left one, at that place of the screen.
    std::function<void(std::uint8_t button, int x, int y)> onClick;
    /// The X server is gone.
    std::function<void()> onLost;

private:
    void createWindow(Pixel root);
    void describe();
    void draw();
    void exposed();
    void read();
    static int onReadable(sd_event_source* source, int fd, std::uint32_t events, void* self) noexcept;

    Handle<xcb_connection_t, xcb_disconnect> connection_;
    xcb_screen_t* screen_ = nullptr;
    Pixel background_;
    xcb_window_t window_ = 0;
    xcb_gcontext_t context_ = 0;
    std::vector<std::vector<Pixel>> icons_; ///< as they are drawn
    sd_event_source* source_ = nullptr;
};

} // namespace velmora
