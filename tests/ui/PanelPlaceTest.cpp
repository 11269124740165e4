// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/PanelPlace.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(PanelPlace, IsAtTheIconAndInsideWhatBarsLeave)
{
    const ScreenArea barAbove{{0, 0, 1280, 800}, {0, 28, 1280, 772}};
    const ScreenArea barBelow{{0, 0, 1280, 800}, {0, 0, 1280, 770}};
    const ScreenArea twice{{0, 0, 960, 540}, {0, 30, 960, 510}, 2};
    const ScreenArea rightOfIt{{1920, 0, 1280, 800}, {1920, 28, 1280, 772}};
    const ScreenArea untold{{0, 0, 1280, 800}, {0, 0, 1280, 800}};
    const ScreenArea tiny{{0, 0, 300, 200}, {0, 0, 300, 200}};
    const struct {
        const char* what;
        std::optional<QPoint> click;
        std::vector<ScreenArea> screens;
        QPoint place;
    } cases[] = {
        {"under a bar above", {{640, 14}}, {barAbove}, {480, 32}},
        {"under a bar that nobody tells of", {{640, 5}}, {untold}, {480, 32}},
        {"over one", {{640, 795}}, {untold}, {480, 318}},
        {"kept in on the right", {{1269, 14}}, {barAbove}, {956, 32}},
        {"kept in on the left", {{3, 14}}, {barAbove}, {4, 32}},
        {"over a bar below", {{640, 785}}, {barBelow}, {480, 316}},
        {"on a bar at the side", {{20, 300}}, {barBelow}, {4, 312}},
        {"amid the screen, where no bar is", {{640, 400}}, {barAbove}, {956, 32}},
        {"of a host that does not know", {{0, 0}}, {barAbove}, {956, 32}},
        {"unknown", {}, {barAbove}, {956, 32}},
        {"off every screen", {{5000, -3}}, {barAbove}, {956, 32}},
        {"a dense screen", {{1000, 20}}, {twice}, {340, 34}},
        {"the second screen", {{2000, 10}}, {twice, rightOfIt}, {1924, 32}},
        {"a screen too small", {{150, 5}}, {tiny}, {4, 4}},
        {"the largest numbers",
         {{std::numeric_limits<int>::max(), std::numeric_limits<int>::max()}},
         {twice},
         {636, 34}},
    };
    for (const auto& [what, click, screens, place] : cases) {
        SCOPED_TRACE(what);
        const auto found = panelPlace(click, screens, {320, 450});
        EXPECT_EQ(found.x(), place.x());
        EXPECT_EQ(found.y(), place.y());
    }
}

} // namespace
} // namespace velmora
