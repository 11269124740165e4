// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Options.h"

#include "wire/ModelFace.h"

#include <string_view>

namespace velmora {

namespace {

std::optional<Errand> widget(std::string_view name)
{
    if (name == "small") return Errand::smallWidget;
    if (name == "medium") return Errand::mediumWidget;
    return std::nullopt;
}

} // namespace

std::optional<Errand> errandOf(int argc, const char* const* argv)
{
    if (argc <= 1) return Errand::run;
    const std::string_view option = argv[1];
    if (argc == 3 && option == "--widget") return widget(argv[2]);
    if (argc > 2) return std::nullopt;
    if (option == "--panel") return Errand::panel;
    if (option == "--dashboard") return Errand::dashboard;
    if (option == "--quit") return Errand::quit;
    if (option == "--help" || option == "-h") return Errand::help;
    return std::nullopt;
}

const char* actionOf(Errand errand)
{
    switch (errand) {
    case Errand::panel:
        return wire::face::panelAction;
    case Errand::dashboard:
        return wire::face::dashboardAction;
    case Errand::smallWidget:
        return wire::face::smallWidgetAction;
    case Errand::mediumWidget:
        return wire::face::mediumWidgetAction;
    case Errand::quit:
        return wire::face::quitAction;
    default:
        return nullptr;
    }
}

} // namespace velmora
