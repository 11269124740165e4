// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "tray/BatteryPicture.h"
#include "tray/TrayState.h"
#include "tray/XConnection.h"

#include <array>
#include <functional>
#include <memory>
#include <vector>

namespace velmora {

/// The tray icon as a window of a few pixels in an X11 system tray (XEmbed). It docks wherever a tray is, and
/// again in each one that comes later. Any of the three buttons counts as a click: the menu would need a
/// toolkit, and all that is in it is in the panel. Loop's thread only; callbacks may not destroy it, but for
/// `onLost`.
class XEmbedIcon {
public:
    /// Null where there is no X server on this machine whose pixels we know how to write, and in a Wayland
    /// session: asking there would only start its X server.
    static std::unique_ptr<XEmbedIcon> open(EventLoop& loop);
    XEmbedIcon(const XEmbedIcon&) = delete;
    XEmbedIcon& operator=(const XEmbedIcon&) = delete;

    void show(const TrayState& state);

    /// Whether a tray has taken it in.
    bool isDocked() const { return isDocked_; }
    /// A tray has taken it in, or it is out again.
    std::function<void()> onChanged;
    /// Where on the screen the button went down.
    std::function<void(ScreenPoint)> onActivate;
    /// The X server is gone, and so is the icon.
    std::function<void()> onLost;

private:
    enum Atom { opcode, manager, visual, embedInfo, utf8, name, selection, atomCount };

    explicit XEmbedIcon(std::unique_ptr<XConnection> x);
    void internAtoms();
    void seek();
    void found(xcb_window_t owner);
    void askForVisual();
    void dock(xcb_visualid_t wanted);
    void createWindow(xcb_visualid_t wanted);
    void requestDock();
    void setDocked(bool docked);
    void undock();
    void forgetWindow();

    void handle(const xcb_generic_event_t& event);
    void messaged(const xcb_client_message_event_t& message);
    void destroyed(xcb_window_t which);
    void reparented(const xcb_reparent_notify_event_t& event);
    void resized(const xcb_configure_notify_event_t& event);

    void draw();
    void drawOver(const xcb_get_image_reply_t* image, int side);
    void drawOver(const std::vector<std::uint32_t>& background, int side, Bar bar);
    void writeName();

    std::unique_ptr<XConnection> x_;
    std::array<xcb_atom_t, atomCount> atoms_{};
    TrayState state_;
    xcb_window_t manager_ = XCB_NONE; ///< the tray's window
    xcb_window_t window_ = XCB_NONE;  ///< ours
    xcb_gcontext_t pen_ = XCB_NONE;
    xcb_colormap_t colors_ = XCB_NONE;
    std::uint8_t depth_ = 0; ///< of our window, bits; 32 has transparency
    int width_ = 0, height_ = 0;
    bool isDocked_ = false;
    bool isStale_ = false; ///< the window does not show the state
    bool awaitsBackground_ = false;
};

} // namespace velmora
