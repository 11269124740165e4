// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/PlatformChoice.h"

namespace velmora {

namespace {

const auto wayland = QStringLiteral("wayland");
const auto x11 = QStringLiteral("xcb");

/// "wayland-egl" is the plugin of "wayland", and "offscreen:..." is "offscreen".
QString pluginOf(const QString& platform)
{
    const auto name = platform.section(':', 0, 0);
    return name.startsWith(wayland) ? wayland : name;
}

bool works(const QString& plugin, const DisplayFacts& facts)
{
    if (!facts.installed.contains(plugin)) return false;
    if (plugin == wayland) return facts.doesWaylandAnswer();
    return plugin != x11 || facts.doesXAnswer();
}

/// Why the two ways that place windows are not taken.
std::string whyUnplaced(const DisplayFacts& facts)
{
    const std::string x = facts.installed.contains(x11) ? "no X server answers" : "Qt's X plugin is missing";
    return "The compositor places the windows: there is no layer-shell, and " + x + ".";
}

} // namespace

PlatformChoice choosePlatform(const DisplayFacts& facts)
{
    for (const auto& platform : facts.wanted) {
        const auto plugin = pluginOf(platform);
        if (works(plugin, facts))
            return {platform, plugin == wayland && facts.hasLayers(), "QT_QPA_PLATFORM wants this platform."};
    }
    const bool hasWayland = works(wayland, facts); // and not only its socket: Qt's plugin may be missing
    if (hasWayland && facts.hasLayers()) return {wayland, true, "The compositor offers layer-shell."};
    if (works(x11, facts))
        return {x11, false, hasWayland ? "There is no layer-shell, and X places windows." : "X answers."};
    if (hasWayland) return {wayland, false, whyUnplaced(facts)};
    if (facts.doesWaylandAnswer())
        return {"", false,
                "the display is Wayland's, and Qt's plugin for it is missing (package qt6-wayland)"};
    return {"", false, "there is no display"};
}

} // namespace velmora
