// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "program/CommandLine.h"

#include "base/Translation.h"
#include "program/WindowsService.h"

#include <map>

namespace velmora {

namespace {

std::optional<QPoint> parsePlace(const QString& text)
{
    const auto parts = text.split(',');
    bool isX = false;
    bool isY = false;
    const QPoint place(parts.value(0).toInt(&isX), parts.value(1).toInt(&isY));
    if (parts.size() != 2 || !isX || !isY) return std::nullopt;
    return place;
}

/// The options and the value of each.
std::variant<std::map<QString, QString>, std::string> pairs(const QStringList& arguments)
{
    static const QStringList known{"--show",    "--show-inactive", "--toggle", "--at",
                                   "--picture", "--window",        "--page"};
    std::map<QString, QString> options;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (!known.contains(*argument)) return tr("Unknown argument %1.", argument->toStdString());
        const auto& option = *argument;
        if (++argument == arguments.end()) return tr("%1 needs a value.", option.toStdString());
        options[option] = *argument;
    }
    return options;
}

} // namespace

std::string CommandLine::usage()
{
    return tr(
        "usage: velmora-ui --show WINDOW\n"
        "       velmora-ui --show-inactive WINDOW    the focus stays where it is\n"
        "       velmora-ui --toggle WINDOW [--at X,Y]    as a click on the tray icon there\n"
        "       velmora-ui --picture FILE --window WINDOW [--page PAGE]    the window as a PNG\n"
        "       velmora-ui --help | --version\n"
        "Windows are \"panel\", \"dashboard\", \"widget-small\" and \"widget-medium\". The pages of the "
        "dashboard\nare Overview, Health, Thermal, Ecosystem, Settings and Notifications. velmora must be "
        "running;\nit starts this program when a window is requested.\n");
}

std::variant<CommandLine, std::string> CommandLine::parse(const QStringList& arguments)
{
    if (arguments == QStringList{"--help"}) return CommandLine{};
    if (arguments == QStringList{"--version"}) return CommandLine{Command::version};
    auto read = pairs(arguments);
    if (const auto* wrong = std::get_if<std::string>(&read)) return *wrong;
    auto& options = std::get<0>(read);
    const auto has = [&](auto... names) {
        return options.size() == sizeof...(names) && (options.contains(names) && ...);
    };
    if (has("--show")) return CommandLine{Command::show, options["--show"]};
    if (has("--show-inactive")) return CommandLine{Command::showInactive, options["--show-inactive"]};
    if (has("--toggle")) return CommandLine{Command::toggle, options["--toggle"]};
    if (has("--picture", "--window") || has("--picture", "--window", "--page"))
        return CommandLine{Command::picture, options["--window"], std::nullopt, options["--picture"],
                           options["--page"]};
    if (!has("--toggle", "--at")) return tr("These options cannot be combined.");
    const auto place = parsePlace(options["--at"]);
    if (!place) return tr("--at needs two numbers: X,Y.");
    return CommandLine{Command::toggle, options["--toggle"], WindowsService::place(place->x(), place->y())};
}

} // namespace velmora
