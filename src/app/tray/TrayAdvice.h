// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "platform/Preferences.h"

#include <memory>

namespace velmora {

/// Says by a notice of the desktop, once in a user's life, how Velmora comes into GNOME's Quick Settings,
/// since GNOME shows no tray icons. Says nothing on other desktops, and where Velmora is there already.
/// Loop's thread only; never blocks.
class TrayAdvice {
public:
    /// The bus must outlive the object.
    TrayAdvice(sd_bus* session, std::shared_ptr<Preferences> preferences);
    TrayAdvice(const TrayAdvice&) = delete;
    TrayAdvice& operator=(const TrayAdvice&) = delete;

    /// To be called where no tray has been found.
    void give();

private:
    int answered(sd_bus_message* reply);
    void notify(const std::string& body);

    sd_bus* session_;
    std::shared_ptr<Preferences> preferences_;
    dbus::Slot question_;
};

} // namespace velmora
