// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/TrayAdvice.h"

#include "base/Translation.h"
#include "bus/Records.h"
#include "wire/ModelFace.h"

#include <utility>

namespace velmora {

namespace {

constexpr auto extension = "velmora@velmora.app";
constexpr double enabled = 1; // of the states of an extension

} // namespace

TrayAdvice::TrayAdvice(sd_bus* session, std::shared_ptr<Preferences> preferences)
    : session_(session), preferences_(std::move(preferences))
{
}

void TrayAdvice::give()
{
    if (preferences_->boolean(preference_key::hasSeenGnomeAdvice)) return;
    const auto call = dbus::newCall(session_, "org.gnome.Shell", "/org/gnome/Shell",
                                    "org.gnome.Shell.Extensions", "GetExtensionInfo");
    dbus::check(sd_bus_message_append(call.get(), "s", extension), "GetExtensionInfo");
    question_ = dbus::ask(session_, call, dbus::serve<TrayAdvice, &TrayAdvice::answered>, this);
}

int TrayAdvice::answered(sd_bus_message* reply)
{
    if (sd_bus_message_is_method_error(reply, nullptr)) return 0; // another desktop
    const auto info = dbus::readArchive(reply);
    if (info.decodeDouble("state", 0) == enabled) return 0;
    const bool isInstalled = !info.decodeText("uuid", "").empty();
    notify(
        isInstalled
            ? tr("GNOME shows no tray icons. To have Velmora in Quick Settings, switch it on in the program "
                 "Extensions, or by: gnome-extensions enable %1",
                 extension)
            : tr("GNOME shows no tray icons. To have Velmora in Quick Settings, install the package "
                 "gnome-shell-extension-velmora. Until then Velmora opens from the list of applications."));
    return 0;
}

void TrayAdvice::notify(const std::string& body)
{
    constexpr auto service = "org.freedesktop.Notifications";
    const auto call = dbus::newCall(session_, service, "/org/freedesktop/Notifications", service, "Notify");
    dbus::check(sd_bus_message_append(call.get(), "susssasa{sv}i", "Velmora", 0U, wire::face::serviceName,
                                      tr("Velmora is running").c_str(), body.c_str(), 0, 1, "desktop-entry",
                                      "s", wire::face::serviceName, -1),
                "Notify");
    dbus::check(sd_bus_message_set_expect_reply(call.get(), false), "Notify");
    dbus::send(call);
    preferences_->set(preference_key::hasSeenGnomeAdvice, true);
}

} // namespace velmora
