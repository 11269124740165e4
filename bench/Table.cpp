// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace velmora {

std::string figure(std::optional<double> value, int decimals)
{
    if (!value) return "–";
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, *value);
    return text.data();
}

double quantile(std::vector<double> values, double part)
{
    std::ranges::sort(values);
    const auto last = static_cast<double>(values.size() - 1);
    return values[static_cast<std::size_t>(std::lround(part * last))];
}

double megabytes(long kilobytes)
{
    constexpr double kilobytesInMegabyte = 1024;
    return static_cast<double>(kilobytes) / kilobytesInMegabyte;
}

void printLine(const std::string& what, const std::string& unit, const std::vector<std::string>& cells)
{
    std::printf("| %s | %s |", what.c_str(), unit.c_str());
    for (const auto& cell : cells) std::printf(" %s |", cell.c_str());
    std::puts("");
    std::fflush(stdout);
}

void print(const Row& row)
{
    std::optional<double> ratio;
    if (row.velmora && row.upower && *row.upower > 0) ratio.emplace(*row.velmora / *row.upower);
    const auto own = [&row](std::optional<double> value) { return figure(value, row.decimals); };
    std::printf("| %s | %s | %s | %s | %s | %s | %s |\n", row.what.c_str(), row.unit.c_str(),
                own(row.velmora).c_str(), own(row.upower).c_str(), figure(ratio, 2).c_str(),
                figure(row.aim, 1).c_str(), own(row.floor).c_str());
    std::fflush(stdout);
}

} // namespace velmora
