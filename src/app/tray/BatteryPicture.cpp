// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/BatteryPicture.h"

#include "base/Saturate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace velmora {

namespace {

constexpr int lowPercent = 20;

/// 0xRRGGBB
struct Inks {
    std::uint32_t plain, charging, low;
};

/// For an unknown bar each is three times lighter than black and three times darker than white.
constexpr Inks inksOn(Bar bar)
{
    switch (bar) {
    case Bar::light:
        return {0x2e3436, 0x1a7f37, 0xc01c28};
    case Bar::dark:
        return {0xf6f5f4, 0x57e389, 0xff7b72};
    case Bar::unknown:
        break;
    }
    return {0x868686, 0x1f9d4c, 0xe5484d};
}

struct Point {
    double x, y;
};

/// Pixels, the far edges excluded.
struct Box {
    int left, top, right, bottom;

    Box shrunk(int by) const { return {left + by, top + by, right - by, bottom - by}; }
    double width() const { return right - left; }
    double height() const { return bottom - top; }

    bool holds(Point p, double radius) const
    {
        if (p.x < left || p.x >= right || p.y < top || p.y >= bottom) return false;
        const double x = std::max({left + radius - p.x, p.x - (right - radius), 0.0});
        const double y = std::max({top + radius - p.y, p.y - (bottom - radius), 0.0});
        return x * x + y * y <= radius * radius || radius <= 0;
    }
};

/// A bolt in a square of side 1, drawn around.
constexpr std::array<Point, 6> boltShape{
    {{0.70, 0.0}, {0.0, 0.57}, {0.42, 0.57}, {0.30, 1.0}, {1.0, 0.43}, {0.58, 0.43}}};

bool boltHolds(const Box& box, Point p)
{
    const Point at{(p.x - box.left) / box.width(), (p.y - box.top) / box.height()};
    bool isInside = false;
    for (std::size_t i = 0, before = boltShape.size() - 1; i < boltShape.size(); before = i++) {
        const auto [ax, ay] = boltShape[i];
        const auto [bx, by] = boltShape[before];
        if ((ay > at.y) != (by > at.y) && at.x < ax + (at.y - ay) * (bx - ax) / (by - ay))
            isInside = !isInside;
    }
    return isInside;
}

int scaled(int size, double part)
{
    return static_cast<int>(std::lround(size * part));
}

/// Where everything lies in a picture of a size, in whole pixels.
struct Layout {
    int stroke;
    double corner;
    Box cap, body, level;
    std::optional<Box> bolt;
};

Layout layout(int percent, bool isCharging, int size)
{
    Layout it{};
    it.stroke = std::max(1, scaled(size, 1 / 14.0));
    const int gap = std::max(1, scaled(size, 1 / 22.0));
    it.corner = size / 10.0;
    const int margin = size < 20 ? 0 : scaled(size, 1 / 24.0);
    const int width = 2 * scaled(size, 0.26);
    const int left = isCharging ? margin : (size - width) / 2;
    const int capHeight = std::max(1, scaled(size, 1 / 12.0));
    it.cap = {left + width / 4, margin, left + width - width / 4, margin + capHeight};
    it.body = {left, it.cap.bottom, left + width, size - margin};
    it.level = it.body.shrunk(it.stroke + gap);
    const int lit = scaled(it.level.bottom - it.level.top, percent / 100.0);
    it.level.top = it.level.bottom - (percent > 0 ? std::max(lit, 1) : 0);
    const int inset = scaled(size, 0.05);
    if (isCharging)
        it.bolt = Box{it.body.right + gap, it.body.top + inset, size - margin / 2, it.body.bottom - inset};
    return it;
}

enum Part { nothing, casing, charge, partCount };

Part partAt(const Layout& it, Point p)
{
    if (it.level.holds(p, 0) || (it.bolt && boltHolds(*it.bolt, p))) return charge;
    if (it.cap.holds(p, 0)) return casing;
    const bool isCasing =
        it.body.holds(p, it.corner) && !it.body.shrunk(it.stroke).holds(p, it.corner - it.stroke);
    return isCasing ? casing : nothing;
}

/// The pixel's share of ink is its opacity; its colour is that of most of it.
std::uint32_t pixelAt(const Layout& it, int x, int y, std::uint32_t plain, std::uint32_t accent)
{
    constexpr int grid = 4; // samples each way
    std::array<unsigned, partCount> samples{};
    for (int row = 0; row < grid; ++row)
        for (int column = 0; column < grid; ++column) {
            const Point at{x + (column + 0.5) / grid, y + (row + 0.5) / grid};
            ++samples[partAt(it, at)];
        }
    const unsigned opacity = (samples[casing] + samples[charge]) * 255 / (grid * grid);
    return opacity << 24U | (samples[casing] > samples[charge] ? plain : accent);
}

} // namespace

int shownPercent(double percentage)
{
    return static_cast<int>(std::clamp<std::int64_t>(truncated(percentage + 0.5), 0, 100));
}

std::string trayIconName(int percent, bool isCharging)
{
    const auto tens = std::to_string((percent + 5) / 10 * 10);
    return "velmora-tray-" + std::string(3 - tens.size(), '0') + tens + (isCharging ? "-charging" : "") +
           "-symbolic";
}

BatteryPicture drawBattery(int percent, bool isCharging, int size, Bar bar)
{
    size = std::clamp(size, 8, 256);
    percent = std::clamp(percent, 0, 100);
    const Layout it = layout(percent, isCharging, size);
    const Inks inks = inksOn(bar);
    const std::uint32_t accent = isCharging ? inks.charging : (percent <= lowPercent ? inks.low : inks.plain);
    BatteryPicture picture{size, {}};
    picture.pixels.reserve(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) picture.pixels.push_back(pixelAt(it, x, y, inks.plain, accent));
    return picture;
}

} // namespace velmora
