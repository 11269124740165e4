// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Translation.h"

#include <cstdint>
#include <optional>

namespace velmora {

/// What velmora was started for.
enum class Command : std::uint8_t {
    run,        ///< stay resident; open the panel of one that runs already and has no tray icon
    background, ///< stay resident; nothing where one runs already, as at log-in
    panel,      ///< open the panel
    dashboard,  ///< open the dashboard
    smallWidget,
    mediumWidget,
    quit, ///< quit the running instance
    help, ///< print the usage
    version,
};

inline constexpr auto usage =
    trMark("usage: velmora [--background | --panel | --dashboard | --widget small|medium | --quit]\n"
           "       velmora --help | --version\n");

/// Nothing for invalid arguments.
std::optional<Command> commandOf(int argc, const char* const* argv);

/// The action of wire::face to activate in the running instance; null for the others.
const char* actionOf(Command command);

} // namespace velmora
