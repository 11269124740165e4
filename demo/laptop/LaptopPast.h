// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "SimulatedLaptop.h"
#include "wire/VelmoraProtocol.h"

#include <filesystem>
#include <vector>

/// The history that a daemon would have kept by now; oldest sample first, a thousand at most, the newest
/// about a quarter of an hour old.
namespace velmora::past {

using Samples = std::vector<HSHistorySnapshot>;

/// Lets such a laptop live through two months of days at a desk, on the road and at home, in the time zone
/// that is `utcOffset` seconds ahead of UTC. Its battery wears by about a point a month, to what it is now.
/// The same arguments give the same past. Empty for a laptop without a battery.
Samples lived(const LaptopMake& make, Date now, double utcOffset);

/// A past that was recorded, moved in time: the daemon's history.json, or a table of comma-separated values
/// with a header and a row a date, in which `date` (or `end`, where rows are spans of time) is YYYY-MM-DD,
/// `full_mAh` and `design_mAh` (or `..._mWh`) are capacities, and `level_max`, where there is one, is the
/// level in percent. Lines that begin with # are comments; rows without a capacity are passed over.
///
/// Throws std::runtime_error with a sentence for what cannot be read or is neither.
Samples recorded(const std::filesystem::path& file, Date now);

} // namespace velmora::past
