// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Options.h"

#include "wire/ModelFace.h"

#include <string_view>

namespace velmora {

namespace {

std::optional<Command> widget(std::string_view name)
{
    if (name == "small") return Command::smallWidget;
    if (name == "medium") return Command::mediumWidget;
    return std::nullopt;
}

} // namespace

std::optional<Command> commandOf(int argc, const char* const* argv)
{
    if (argc <= 1) return Command::run;
    const std::string_view option = argv[1];
    if (argc == 3 && option == "--widget") return widget(argv[2]);
    if (argc > 2) return std::nullopt;
    if (option == "--background") return Command::background;
    if (option == "--panel") return Command::panel;
    if (option == "--dashboard") return Command::dashboard;
    if (option == "--quit") return Command::quit;
    if (option == "--help" || option == "-h") return Command::help;
    if (option == "--version") return Command::version;
    return std::nullopt;
}

const char* actionOf(Command command)
{
    switch (command) {
    case Command::panel:
        return wire::face::panelAction;
    case Command::dashboard:
        return wire::face::dashboardAction;
    case Command::smallWidget:
        return wire::face::smallWidgetAction;
    case Command::mediumWidget:
        return wire::face::mediumWidgetAction;
    case Command::quit:
        return wire::face::quitAction;
    default:
        return nullptr;
    }
}

} // namespace velmora
