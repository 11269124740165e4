// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ChargerObject.h"

#include "SessionTest.h"

namespace velmora {
namespace {

namespace wired = wire::face::charger;

struct ChargerObjectTest : SessionTest {
    int changed(sd_bus_message* signal)
    {
        dbus::check(sd_bus_message_skip(signal, "s"), "skip");
        announced.push_back(dbus::readArchive(signal));
        return 0;
    }

    std::optional<ChargerReport> report;
    ChargerObject object{loop, application.get(), [this] { return report; }};
    std::vector<KeyedArchive> announced; ///< a signal each
};

TEST_F(ChargerObjectTest, PassesTheReportOnAndSaysWhetherThereIsOne)
{
    const auto match = dbus::match(stranger.get(), "type='signal',member='PropertiesChanged'",
                                   dbus::serve<ChargerObjectTest, &ChargerObjectTest::changed>, this);
    const auto getAll = call("org.freedesktop.DBus.Properties", "GetAll", wired::objectPath);
    dbus::check(sd_bus_message_append(getAll.get(), "s", wired::interface), "append");
    KeyedArchive unknown;
    unknown.encode(wired::isKnown, false);
    unknown.update(ChargerReport{}.archived());
    EXPECT_EQ(dbus::readArchive(ask(getAll).get()), unknown);

    report = ChargerReport{.mode = "storage", .endThreshold = 50};
    for (int time = 0; time < 2; ++time) object.changed();
    ASSERT_TRUE(eventually([&] { return !announced.empty(); }));
    KeyedArchive news;
    news.encode(wired::isKnown, true);
    news.encode("Mode", "storage");
    news.encode("EndThreshold", std::int64_t{50});
    EXPECT_EQ(announced, std::vector{news}) << "what is new of it, once";

    report.reset();
    object.changed();
    ASSERT_TRUE(eventually([&] { return announced.size() > 1; }));
    EXPECT_FALSE(announced.back().decodeBool(wired::isKnown, true));
}

} // namespace
} // namespace velmora
