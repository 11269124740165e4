// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QPoint>
#include <QString>
#include <QStringList>
#include <optional>
#include <string>
#include <variant>

namespace velmora {

/// What velmora-ui was started for.
struct CommandLine {
    enum class Command { help, version, show, showInactive, toggle, picture };

    Command command = Command::help;
    QString window{};
    std::optional<QPoint> click{}; ///< on the tray icon, in pixels of the display
    QString picture{};             ///< file
    QString page{};                ///< of the window in the picture; empty: its first

    static std::string usage();

    /// `arguments` are without the program's name. A sentence that says what is wrong where they are invalid.
    static std::variant<CommandLine, std::string> parse(const QStringList& arguments);
};

} // namespace velmora
