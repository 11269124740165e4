// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/BatteryPicture.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>

namespace velmora {
namespace {

/// As WCAG 2 defines it.
double luminance(std::uint32_t pixel)
{
    const auto part = [pixel](unsigned shift) {
        const double value = (pixel >> shift & 0xffU) / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(16) + 0.7152 * part(8) + 0.0722 * part(0);
}

double contrast(std::uint32_t one, std::uint32_t other)
{
    const double a = luminance(one) + 0.05, b = luminance(other) + 0.05;
    return std::max(a, b) / std::min(a, b);
}

std::vector<std::uint32_t> grounds(Bar bar)
{
    if (bar == Bar::unknown) return {0x000000, 0xffffff};
    return {bar == Bar::light ? 0xe0e0e0U : 0x303030U};
}

double ink(const BatteryPicture& picture)
{
    double sum = 0;
    for (const auto pixel : picture.pixels) sum += pixel >> 24U;
    return sum / 255;
}

/// Each level and state at each size that trays ask for, on the grounds that it is drawn for.
TEST(BatteryPicture, TellsLevelAndChargingInItsBar)
{
    for (const int size : {16, 22, 24, 32, 48})
        for (const Bar bar : {Bar::unknown, Bar::light, Bar::dark})
            for (double inkBefore = -1; const int percent : {0, 1, 20, 30, 40, 50, 60, 70, 80, 90, 100}) {
                SCOPED_TRACE(testing::Message() << size << " px, " << percent << " %, bar " << int(bar));
                const auto picture = drawBattery(percent, false, size, bar);
                const auto charging = drawBattery(percent, true, size, bar);
                EXPECT_GT(ink(picture), inkBefore);
                inkBefore = ink(picture);
                int differing = 0, solid = 0;
                for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
                    differing += picture.pixels[i] != charging.pixels[i];
                    solid += charging.pixels[i] >> 24U == 0xffU;
                    for (const auto ground : grounds(bar)) {
                        EXPECT_GE(contrast(picture.pixels[i], ground), 3);
                        EXPECT_GE(contrast(charging.pixels[i], ground), 3);
                    }
                }
                EXPECT_GT(differing, size * size / 8);
                EXPECT_GT(solid / ink(charging), 0.7); // sharp: few half-covered pixels
            }
}

TEST(BatteryPicture, TakesAnyNumber)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::pair<double, int> cases[] = {{0, 0},         {59.4, 59},  {59.5, 60}, {100, 100},
                                            {652, 100},     {-5, 0},     {NAN, 0},   {infinity, 100},
                                            {-infinity, 0}, {1e300, 100}};
    for (const auto& [percentage, shown] : cases) EXPECT_EQ(shownPercent(percentage), shown) << percentage;
    EXPECT_EQ(drawBattery(-7, false, -1, Bar::dark), drawBattery(0, false, 8, Bar::dark));
    EXPECT_EQ(drawBattery(700, true, 30'000, Bar::dark).size, 256);
}

TEST(BatteryPicture, HasAnIconForEachLevelBesideTheProgram)
{
    const auto icons = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() /
                       "share/icons/hicolor/scalable/status";
    for (int percent = 0; percent <= 100; ++percent)
        for (const bool isCharging : {false, true}) {
            const auto name = trayIconName(percent, isCharging);
            EXPECT_TRUE(std::filesystem::exists(icons / (name + ".svg"))) << name;
        }
}

} // namespace
} // namespace velmora
