// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/TrayAdvice.h"

#include "base/Translation.h"
#include "bus/Records.h"
#include "platform/Platform.h"

#include <optional>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

constexpr auto extension = "velmora@velmora.app";
constexpr double enabled = 1; // of the states of an extension

/// What to say where GNOME Shell answers so; nothing where Velmora is in sight.
std::optional<std::string> adviceAfter(sd_bus_message* reply)
{
    if (sd_bus_message_is_method_error(reply, nullptr))
        return tr("No tray shows Velmora's icon here. Velmora opens from the list of applications, and when "
                  "you click on its notices.");
    const auto info = dbus::readArchive(reply);
    if (info.decodeDouble("state", 0) == enabled) return std::nullopt;
    if (!info.decodeText("uuid", "").empty())
        return tr("GNOME shows no tray icons. To have Velmora in Quick Settings, switch it on in the program "
                  "Extensions, or by: gnome-extensions enable %1",
                  extension);
    return tr("GNOME shows no tray icons. To have Velmora in Quick Settings, install the package "
              "gnome-shell-extension-velmora. Until then Velmora opens from the list of applications.");
}

bool hasBeenGiven()
{
    return Platform::current().preferences->boolean(preference_key::hasSeenGnomeAdvice);
}

/// A callback for any thread whose first argument reaches `act` on the main one, while its owner is there.
template <typename Act>
auto onMainLoop(const Lifetime& owner, Act act)
{
    return [act = owner.guard(std::move(act)), loop = Platform::current().mainLoop](
               const auto& first, const auto&...) { loop->post([act, first] { act(first); }); };
}

} // namespace

void TrayAdvice::give()
{
    if (hasBeenGiven()) return;
    try {
        const auto call = dbus::newCall(session_, "org.gnome.Shell", "/org/gnome/Shell",
                                        "org.gnome.Shell.Extensions", "GetExtensionInfo");
        dbus::check(sd_bus_message_append(call.get(), "s", extension), "GetExtensionInfo");
        question_ = dbus::ask(session_, call, dbus::serve<TrayAdvice, &TrayAdvice::answered>, this);
    } catch (const std::system_error&) {
        // The connection is gone, and the session with it.
    }
}

int TrayAdvice::answered(sd_bus_message* reply)
{
    auto advice = adviceAfter(reply);
    if (!advice) return 0;
    advice_ = std::move(*advice);
    // At log-in the server may come after us.
    Platform::current().notificationCenter->requestAuthorization(
        onMainLoop(lifetime_, [this](bool isGranted) {
            if (isGranted) post();
        }));
    return 0;
}

/// What nobody showed was not said, and is tried again at the next start.
void TrayAdvice::post()
{
    if (hasBeenGiven()) return;
    Platform::current().notificationCenter->add(
        {.identifier = identifier, .title = tr("Velmora is running"), .body = advice_},
        onMainLoop(lifetime_, [](const std::optional<std::string>& error) {
            if (!error) Platform::current().preferences->set(preference_key::hasSeenGnomeAdvice, true);
        }));
}

} // namespace velmora
