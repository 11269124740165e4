// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/VelmoraProtocol.h"

#include <string>
#include <vector>

/// The battery's history, oldest sample first.
namespace velmora::ctl {

std::string historyText(const std::vector<HSHistorySnapshot>& samples);
/// With a line of names; dates in UTC.
std::string historyCsv(const std::vector<HSHistorySnapshot>& samples);
/// Likewise, an array of objects.
std::string historyJson(const std::vector<HSHistorySnapshot>& samples);

} // namespace velmora::ctl
