// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/PanelPlace.h"
#include "desktop/PlatformChoice.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

enum Answers : unsigned { nobody = 0, waylandAnswers = 1, xAnswers = 2, layersOffered = 4 };

struct Platforms {
    const char* what;
    const char* wanted;
    const char* installed;
    unsigned answers;
    const char* chosen;
    bool layers;
};

TEST(Platform, IsTheOneThatPlacesWindowsAndNeverOneThatFails)
{
    constexpr auto all = "xcb;wayland;wayland;offscreen";
    constexpr auto both = waylandAnswers | xAnswers;
    const Platforms cases[] = {
        {"placed by layer-shell", "", all, both | layersOffered, "wayland", true},
        {"placed by XWayland", "", all, both, "xcb", false},
        {"X alone", "", all, xAnswers, "xcb", false},
        {"an ordinary window", "", all, waylandAnswers, "wayland", false},
        {"Wayland without its plugin", "", "xcb", both | layersOffered, "xcb", false},
        {"Wayland without its plugin and XWayland", "", "xcb", waylandAnswers, "", false},
        {"X without its plugin", "", "wayland", both, "wayland", false},
        {"nothing", "", all, nobody, "", false},
        {"wanted", "xcb", all, both | layersOffered, "xcb", false},
        {"wanted, with layers", "wayland-egl", all, both | layersOffered, "wayland-egl", true},
        {"wanted, with arguments", "offscreen:size=1x1", all, nobody, "offscreen:size=1x1", false},
        {"the second one wanted", "wayland;xcb", all, xAnswers, "xcb", false},
        {"wanted in vain", "wayland", "xcb", both, "xcb", false},
        {"of no plugin", "eglfs", all, both, "xcb", false},
    };
    for (const auto& [what, wanted, installed, answers, chosen, layers] : cases) {
        const auto has = [given = answers](unsigned answer) { return [=] { return (given & answer) != 0; }; };
        const auto choice = choosePlatform({.wanted = QString(wanted).split(';', Qt::SkipEmptyParts),
                                            .installed = QString(installed).split(';'),
                                            .doesWaylandAnswer = has(waylandAnswers),
                                            .doesXAnswer = has(xAnswers),
                                            .hasLayers = has(layersOffered)});
        EXPECT_EQ(choice.platform.toStdString(), chosen) << what;
        EXPECT_EQ(choice.layers, layers) << what;
        EXPECT_FALSE(choice.reason.empty()) << what;
    }
}

TEST(Platform, DoesNotWakeAnXWaylandThatItDoesNotNeed)
{
    const auto yes = [] { return true; };
    bool isWoken = false;
    const auto wake = [&] { return isWoken = true; };
    EXPECT_TRUE(choosePlatform({{}, {"xcb", "wayland"}, yes, wake, yes}).layers);
    EXPECT_FALSE(isWoken);
}

TEST(PanelLayer, IsAtTheEdgeOfTheBarThatWasClicked)
{
    const ScreenArea left{{0, 0, 1280, 800}, {0, 0, 1280, 800}};
    const ScreenArea dense{{0, 0, 1280, 800}, {0, 0, 1280, 800}, 2};
    const ScreenArea right{{1280, 0, 1920, 1080}, {1280, 0, 1920, 1080}};
    const std::tuple<const char*, std::optional<QPoint>, PanelLayer> cases[] = {
        {"bar above", {{640, 10}}, {0, {Qt::TopEdge | Qt::LeftEdge, {480, 8, 8, 8}}}},
        {"bar below", {{1092, 778}}, {0, {Qt::BottomEdge | Qt::LeftEdge, {932, 8, 8, 8}}}},
        {"in its corner", {{1275, 778}}, {0, {Qt::BottomEdge | Qt::LeftEdge, {956, 8, 8, 8}}}},
        {"bar at the side", {{10, 500}}, {0, {Qt::LeftEdge | Qt::TopEdge, {8, 275, 8, 8}}}},
        {"the second screen", {{3000, 1070}}, {1, {Qt::BottomEdge | Qt::LeftEdge, {1560, 8, 8, 8}}}},
        {"amid the screen", {{640, 400}}, {0, {Qt::TopEdge | Qt::RightEdge, {4, 8, 4, 8}}}},
        {"unknown", {}, {0, {Qt::TopEdge | Qt::RightEdge, {4, 8, 4, 8}}}},
    };
    for (const auto& [what, click, place] : cases)
        EXPECT_EQ(panelLayer(click, {left, right}, {320, 450}), place) << what;
    const PanelLayer below{0, {Qt::BottomEdge | Qt::LeftEdge, {944, 8, 8, 8}}};
    EXPECT_EQ(panelLayer(QPoint(1104, 772), {dense}, {320, 450}), below);
    EXPECT_EQ(panelLayer(QPoint(1656, 1158), {dense}, {320, 450}), below) << "in pixels, at 150 %";
    EXPECT_EQ(panelLayer(QPoint(2208, 1544), {dense}, {320, 450}), below) << "in pixels, at 200 %";
}

} // namespace
} // namespace velmora
