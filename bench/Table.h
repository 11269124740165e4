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

/// As it stands in a table: a dash for nothing.
std::string figure(std::optional<double> value, int decimals);

/// The value that `part` of all lie below: 0.5 is the median. Of at least one value.
double quantile(std::vector<double> values, double part);

} // namespace velmora
