// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Translation.h"

#include <cstdint>
#include <optional>

namespace velmora {

/// What a person asks velmora for when starting it.
enum class Command : std::uint8_t {
    run,       ///< be there; the panel where there is no tray icon to open it
    panel,     ///< open the panel
    dashboard, ///< open the dashboard
    smallWidget,
    mediumWidget,
    quit, ///< end the one that runs
    help, ///< say how it is started
};

inline constexpr auto usage =
    trMark("usage: velmora [--panel | --dashboard | --widget small|medium | --quit]\n");

/// Nothing for arguments that make no sense.
std::optional<Command> commandOf(int argc, const char* const* argv);

/// The action of wire::face that the one who runs is asked for; null for none, which is to be there.
const char* actionOf(Command command);

} // namespace velmora
