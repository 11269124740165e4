// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/WindowFrame.h"

#include "desktop/X11.h"

namespace velmora {

WindowFrame::WindowFrame(QObject* parent) : QObject(parent)
{
    connect(this, &WindowFrame::darkChanged, this, &WindowFrame::ask);
}

void WindowFrame::ask()
{
    auto* server = x11::server();
    if (!server || !window_) return;
    const std::string_view variant = isDark_ ? "dark" : "light";
    xcb_change_property(server, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window_->winId()),
                        x11::atom(server, "_GTK_THEME_VARIANT"), x11::atom(server, "UTF8_STRING"), 8,
                        static_cast<std::uint32_t>(variant.size()), variant.data());
    xcb_flush(server);
}

} // namespace velmora
