// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

/// What the picture will lie on.
enum class Bar : std::uint8_t {
    unknown, ///< ink of middle lightness, which stands out from either of the others
    light,
    dark,
};

struct BatteryPicture {
    int size = 0;                      ///< pixels a side
    std::vector<std::uint32_t> pixels; ///< 0xAARRGGBB, not premultiplied; row by row from the top

    std::uint32_t at(int x, int y) const
    {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(size) +
                      static_cast<std::size_t>(x)];
    }

    friend bool operator==(const BatteryPicture&, const BatteryPicture&) = default;
};

/// Whole percent between 0 and 100 that `percentage` is shown as; 0 for what is no number.
int shownPercent(double percentage);

/// Name of the icon, one for each ten percent, under which the same picture is installed in the icon theme.
std::string trayIconName(int percent, bool isCharging);

/// An upright battery filled to `percent`, its edges on whole pixels, with a bolt beside it while it charges;
/// green while charging, red at 20 percent and below. `size` is held between 8 and 256.
BatteryPicture drawBattery(int percent, bool isCharging, int size, Bar bar);

} // namespace velmora
