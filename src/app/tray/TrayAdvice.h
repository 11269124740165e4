// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "bus/DBus.h"

#include <string>

namespace velmora {

/// Says by a notice, once in a user's life, where Velmora is when no tray shows its icon: on GNOME in Quick
/// Settings, and how it gets there; elsewhere in the list of applications. Says nothing where GNOME's Quick
/// Settings have it already, and waits for a server that shows notices. Main thread only; never blocks.
class TrayAdvice {
public:
    static constexpr auto identifier = "where_velmora_is"; ///< of the notice

    /// The bus must outlive the object.
    explicit TrayAdvice(sd_bus* session) : session_(session) {}
    TrayAdvice(const TrayAdvice&) = delete;
    TrayAdvice& operator=(const TrayAdvice&) = delete;

    /// To be called where no tray has been found.
    void give();

private:
    int answered(sd_bus_message* reply);
    void post();

    Lifetime lifetime_;
    sd_bus* session_;
    std::string advice_;
    dbus::Slot question_;
};

} // namespace velmora
