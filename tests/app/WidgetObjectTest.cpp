// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/Exports.h"

#include "SessionTest.h"

namespace velmora {
namespace {

namespace wired = wire::face::widget;

struct WidgetObjectTest : SessionTest {
    WidgetObjectTest() { exports::serve(object, settings); }

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
    ExportedObject object{loop, application.get(), wired::small};
};

TEST_F(WidgetObjectTest, IsSetFromOutsideWithinTheDisplay)
{
    EXPECT_EQ(set("place", "ai", 2, -7, 32'767), "");
    EXPECT_EQ(settings.place.get(), (WidgetPlace{-7, 32'767}));
    EXPECT_EQ(set("place", "ai", 2, 1, 32'768), SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_EQ(set("place", "ai", 1, 1), SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_EQ(set("place", "ai", 3, 1, 2, 3), SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_EQ(settings.place.get(), (WidgetPlace{-7, 32'767}));
    EXPECT_EQ(set("place", "ai", 0), "");
    EXPECT_EQ(settings.place.get(), std::nullopt);
}

} // namespace
} // namespace velmora
