// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Table.h"

#include <array>
#include <cstdio>

namespace velmora {

namespace {

std::string number(std::optional<double> value, int decimals)
{
    if (!value) return "–";
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, *value);
    return text.data();
}

} // namespace

void print(const Row& row)
{
    std::optional<double> ratio;
    if (row.velmora && row.upower && *row.upower > 0) ratio.emplace(*row.velmora / *row.upower);
    const auto figure = [&row](std::optional<double> value) { return number(value, row.decimals); };
    std::printf("| %s | %s | %s | %s | %s | %s | %s |\n", row.what.c_str(), row.unit.c_str(),
                figure(row.velmora).c_str(), figure(row.upower).c_str(), number(ratio, 2).c_str(),
                number(row.aim, 1).c_str(), figure(row.floor).c_str());
    std::fflush(stdout);
}

} // namespace velmora
