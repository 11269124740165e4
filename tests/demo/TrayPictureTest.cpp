// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "TrayPicture.h"
#include "TrayLayout.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>

namespace velmora {

namespace {

constexpr int most = std::numeric_limits<int>::max();
constexpr Pixel black = 0xff000000;

TrayPicture plain(int width, int height, Pixel color = 0xffffffff)
{
    return {width, height, std::vector<Pixel>(static_cast<std::size_t>(width * height), color)};
}

TEST(TrayPicture, IsOnlyMadeOfBytesThatFitItsSize)
{
    const struct {
        int width, height;
        std::size_t bytes;
        bool isPicture;
    } cases[] = {
        {2, 3, 24, true},    {2, 3, 23, false},    {2, 3, 25, false},     {0, 0, 0, false},
        {-2, -3, 24, false}, {256, 1, 1024, true}, {257, 1, 1028, false}, {most, most, 4, false},
    };
    for (const auto& [width, height, bytes, isPicture] : cases) {
        SCOPED_TRACE(testing::Message() << width << " x " << height << ", " << bytes << " bytes");
        EXPECT_EQ(TrayPicture::decode(width, height, std::vector<std::byte>(bytes)).has_value(), isPicture);
    }
    const std::byte network[] = {std::byte{1}, std::byte{2}, std::byte{3}, std::byte{4}};
    EXPECT_EQ(TrayPicture::decode(1, 1, network)->pixels, std::vector<Pixel>{0x01020304});
}

TEST(TrayPicture, TheSmallestThatFillsTheSquareIsChosen)
{
    const std::vector<int> offers{16, 48, 24, 22, 32};
    for (const auto& [size, wanted] : {std::pair{16, 16}, {17, 22}, {22, 22}, {30, 32}, {64, 48}}) {
        TrayPicture best;
        for (const int side : offers)
            if (const auto offer = plain(side, side); isBetter(offer, best, size)) best = offer;
        EXPECT_EQ(best.width, wanted) << "for " << size;
    }
}

TEST(TrayPicture, IsDrawnWholeAndInTheMiddle)
{
    const std::vector<Pixel> dot = composed(plain(1, 1), 3, black);
    EXPECT_EQ(dot, (std::vector<Pixel>{black, black, black, black, 0xffffffff, black, black, black, black}));
    const auto wide = composed(plain(256, 128), 4, black); // half as high as the square
    EXPECT_EQ(std::ranges::count(wide, 0xffffffff), 8);
    EXPECT_EQ(composed(plain(1, 1, 0x80ff0000), 1, 0xff0000ff), std::vector<Pixel>{0xff80007f});
}

TEST(TrayLayout, AClickAtAnItemsMiddleMeetsThatItem)
{
    const TrayLayout layout{110, 9};
    EXPECT_EQ(layout.shown(), 3U);
    for (std::size_t i = 0; i < layout.shown(); ++i) EXPECT_EQ(layout.at(layout.centre(i).x), i);
    for (const int x : {-32'768, -1, 9, 106, 109, 110, 32'767}) EXPECT_EQ(layout.at(x), std::nullopt) << x;
}

} // namespace

} // namespace velmora
