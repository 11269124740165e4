// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "WidgetObject.h"

#include "SessionTest.h"

namespace velmora {
namespace {

namespace wired = wire::face::widget;

struct WidgetObjectTest : SessionTest {
    template <typename... Arguments>
    std::string set(const char* property, const char* type, Arguments... arguments)
    {
        const auto message = call("org.freedesktop.DBus.Properties", "Set", wired::smallPath);
        dbus::check(sd_bus_message_append(message.get(), "ss", wired::interface, property), "append");
        dbus::check(sd_bus_message_append(message.get(), "v", type, arguments...), "append");
        ask(message);
        return lastError;
    }

    FakePlatform machine;
    WidgetSettings settings{"small"};
    WidgetObject object{loop, application.get(), wired::smallPath, settings};
};

TEST_F(WidgetObjectTest, IsSetFromOutsideWithinTheDisplay)
{
    EXPECT_EQ(set("isPinned", "b", true), "");
    EXPECT_TRUE(settings.isPinned.get());
    EXPECT_EQ(set("place", "ai", 2, -7, 32'767), "");
    EXPECT_EQ(settings.place.get(), (WidgetPlace{-7, 32'767}));
    const auto get = call("org.freedesktop.DBus.Properties", "Get", wired::smallPath);
    dbus::check(sd_bus_message_append(get.get(), "ss", wired::interface, "place"), "append");
    int x = 0, y = 0;
    EXPECT_GT(sd_bus_message_read(ask(get).get(), "v", "ai", 2, &x, &y), 0);
    EXPECT_EQ((WidgetPlace{x, y}), settings.place.get());

    EXPECT_EQ(set("place", "ai", 2, 1, 32'768), SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_EQ(set("place", "ai", 1, 1), SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_EQ(set("place", "ai", 3, 1, 2, 3), SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_EQ(settings.place.get(), (WidgetPlace{-7, 32'767}));
    EXPECT_EQ(set("place", "ai", 0), "");
    EXPECT_EQ(settings.place.get(), std::nullopt);
}

} // namespace
} // namespace velmora
