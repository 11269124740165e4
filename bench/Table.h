// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// One line of the table whose head `bench/run` prints. What was not measured is a dash.
struct Row {
    std::string what;
    std::string unit;
    std::optional<double> velmora, upower, floor;
    std::optional<double> aim{}; ///< of the ratio to upower; 0 means that Velmora's own figure should be 0
    int decimals = 2;
};

void print(const Row& row);

/// A line of a table whose columns are the caller's.
void printLine(const std::string& what, const std::string& unit, const std::vector<std::string>& cells);

/// As it stands in a table: a dash for nothing.
std::string figure(std::optional<double> value, int decimals);

double megabytes(long kilobytes);

/// The value that `part` of all lie below: 0.5 is the median. Of at least one value.
double quantile(std::vector<double> values, double part);

} // namespace velmora
