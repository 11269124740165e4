// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Translation.h"

#include <cstdint>
#include <optional>

namespace velmora {

/// What velmora was started for.
enum class Command : std::uint8_t {
    run,       ///< stay resident; open the panel where no tray icon could open it
    panel,     ///< open the panel
    dashboard, ///< open the dashboard
    smallWidget,
    mediumWidget,
    quit, ///< quit the running instance
    help, ///< print the usage
};

inline constexpr auto usage =
    trMark("usage: velmora [--panel | --dashboard | --widget small|medium | --quit]\n");

/// Nothing for invalid arguments.
std::optional<Command> commandOf(int argc, const char* const* argv);

/// The action of wire::face to activate in the running instance; null for `run` and `help`.
const char* actionOf(Command command);

} // namespace velmora
