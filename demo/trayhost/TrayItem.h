// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "StatusNotifierWatcher.h"
#include "TrayPicture.h"

#include <cstdint>
#include <functional>
#include <string>

namespace velmora {

/// One item that a program shows in the tray, seen from the tray. Whatever the program answers, and should it
/// never answer, the picture is one that can be drawn and the text one that can be printed. Loop's thread
/// only.
class TrayItem {
public:
    enum class Click : std::uint8_t { activate, secondary, menu };

    /// `size` is the square, in pixels, that the picture is chosen for; `changed` is called after each look
    /// at the item.
    TrayItem(sd_bus* bus, ItemAddress address, int size, std::function<void()> changed);
    TrayItem(const TrayItem&) = delete;
    TrayItem& operator=(const TrayItem&) = delete;

    const ItemAddress& address() const { return address_; }
    const TrayPicture& picture() const { return picture_; }
    /// The tooltip in one line, its title before it; empty where there is none.
    const std::string& text() const { return text_; }

    /// Tells the program of a click at that place of the screen, and waits for nothing.
    void click(Click kind, int x, int y);

private:
    void ask();
    int answered(sd_bus_message* reply);
    int announced(sd_bus_message* signal);
    void read(sd_bus_message* properties);

    sd_bus* bus_;
    ItemAddress address_;
    int size_;
    std::function<void()> changed_;
    TrayPicture picture_ = TrayPicture::standIn(size_);
    std::string text_;
    bool isStale_ = false; ///< changed while the program was asked
    dbus::Slot news_;
    dbus::Slot question_;
};

} // namespace velmora
