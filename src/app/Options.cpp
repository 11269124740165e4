// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Options.h"

#include <string_view>

namespace velmora {

std::optional<Errand> errandOf(int argc, const char* const* argv)
{
    if (argc <= 1) return Errand::run;
    const std::string_view option = argv[1];
    if (argc > 2) return std::nullopt;
    if (option == "--panel") return Errand::panel;
    if (option == "--dashboard") return Errand::dashboard;
    if (option == "--quit") return Errand::quit;
    if (option == "--help" || option == "-h") return Errand::help;
    return std::nullopt;
}

} // namespace velmora
