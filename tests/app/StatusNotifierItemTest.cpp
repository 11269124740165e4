// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LoopTest.h"
#include "PrivateBus.h"
#include "RecordingLog.h"
#include "TrayHost.h"
#include "tray/TrayIcon.h"

#include <cstdlib>
#include <gmock/gmock.h>

namespace velmora {
namespace {

using testing::ElementsAre;

constexpr auto itemPath = "/StatusNotifierItem", itemInterface = "org.kde.StatusNotifierItem";
constexpr auto menuPath = "/MenuBar", menuInterface = "com.canonical.dbusmenu";
constexpr auto properties = "org.freedesktop.DBus.Properties";

struct StatusNotifierItemTest : LoopTest {
    StatusNotifierItemTest()
    {
        unsetenv("DISPLAY");
        icon.onNoHost = [this] { events.emplace_back("no host"); };
        icon.onOpenPanel = [this] { events.emplace_back("panel"); };
        icon.onLaunchDashboard = [this] { events.emplace_back("dashboard"); };
        icon.onQuit = [this] { events.emplace_back("quit"); };
        icon.onLimit = [this](double limit) { events.push_back(std::to_string(static_cast<int>(limit))); };
        icon.onAutoProtect = [this] { events.emplace_back("protect"); };
        icon.onActivate = [this](auto at) {
            events.push_back(at ? std::to_string(at->x) + "," + std::to_string(at->y) : "somewhere");
        };
    }

    void showIcon()
    {
        host.appear();
        ASSERT_TRUE(eventually([&] { return icon.isShown(); }));
        events.clear();
    }

    /// The icon's answer: null for an error.
    template <typename... Arguments>
    dbus::Message ask(const char* path, const char* interface, const char* member, const char* types,
                      Arguments... arguments)
    {
        const char* item = nullptr;
        sd_bus_get_unique_name(session.get(), &item);
        const auto call = dbus::newCall(host.bus(), item, path, interface, member);
        dbus::check(sd_bus_message_append(call.get(), types, arguments...), member);
        auto reply = answer(host.bus(), call);
        if (reply && sd_bus_message_is_method_error(reply.get(), nullptr)) reply.reset();
        return reply;
    }

    std::string text(const char* property)
    {
        const auto reply = ask(itemPath, properties, "Get", "ss", itemInterface, property);
        const char* value = nullptr;
        return reply && sd_bus_message_read(reply.get(), "v", "s", &value) > 0 ? value : "nothing";
    }

    /// Each entry's label, whether it is off, its mark and whether that is on.
    std::vector<std::string> menu()
    {
        std::vector<std::string> entries;
        const auto layout = ask(menuPath, menuInterface, "GetLayout", "iias", 0, -1, 0);
        auto* message = layout.get();
        sd_bus_message_skip(message, "u");
        sd_bus_message_enter_container(message, 'r', "ia{sv}av");
        sd_bus_message_skip(message, "ia{sv}");
        sd_bus_message_enter_container(message, 'a', "v");
        while (sd_bus_message_enter_container(message, 'v', "(ia{sv}av)") > 0) {
            sd_bus_message_enter_container(message, 'r', "ia{sv}av");
            sd_bus_message_skip(message, "i");
            entries.push_back(propertiesIn(message));
            sd_bus_message_skip(message, "av");
            sd_bus_message_exit_container(message);
            sd_bus_message_exit_container(message);
        }
        return entries;
    }

    static std::string propertiesIn(sd_bus_message* message)
    {
        std::string words;
        const char *name = nullptr, *type = nullptr, *text = nullptr;
        int number = 0;
        sd_bus_message_enter_container(message, 'a', "{sv}");
        while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
            sd_bus_message_read(message, "s", &name);
            sd_bus_message_peek_type(message, nullptr, &type);
            const bool isText = *type == 's';
            sd_bus_message_read(message, "v", type, isText ? static_cast<void*>(&text) : &number);
            if (isText) words += (words.empty() ? "" : " ") + std::string(text);
            if (!isText && (*type == 'i') == (number != 0)) words += *type == 'i' ? " on" : " off";
            sd_bus_message_exit_container(message);
        }
        sd_bus_message_exit_container(message);
        return words;
    }

    PrivateBus bus;
    RecordingLog log;
    dbus::Bus session = dbus::openSystemBus(loop);
    TrayHost host{loop};
    std::vector<std::string> events;
    TrayIcon icon{loop, session.get(), log, std::chrono::milliseconds{10}};
};

TEST_F(StatusNotifierItemTest, IsShownWhileAHostIsThere)
{
    EXPECT_TRUE(eventually([&] { return !events.empty(); }));
    EXPECT_THAT(events, ElementsAre("no host"));
    EXPECT_EQ(log.count("No tray"), 1);
    host.hasHost = false;
    host.appear();
    ASSERT_TRUE(eventually([&] { return host.items.size() == 1; }));
    ASSERT_EQ(text("Id"), "velmora");
    EXPECT_FALSE(icon.isShown());

    host.hasHost = true;
    host.say("StatusNotifierHostRegistered");
    EXPECT_TRUE(eventually([&] { return icon.isShown(); }));
    host.hasHost = false;
    host.say("StatusNotifierHostUnregistered");
    EXPECT_TRUE(eventually([&] { return !icon.isShown(); }));

    host.hasHost = true;
    host.disappear();
    showIcon();
    EXPECT_EQ(host.items.size(), 2);
    bus.stop();
    EXPECT_TRUE(eventually([&] { return !icon.isShown(); }));
    EXPECT_THAT(events, ElementsAre());
}

TEST_F(StatusNotifierItemTest, StaysCalmWithAWatcherThatDoesNot)
{
    showIcon();
    for (int i = 0; i < 100; ++i) host.say("StatusNotifierHostRegistered");
    host.hasHost = false;
    host.say("StatusNotifierHostUnregistered");
    EXPECT_TRUE(eventually([&] { return !icon.isShown(); })) << "the last word counts";
    EXPECT_LT(host.questions, 50);

    host.hasHost = true;
    for (int flap = 0; flap < 2; ++flap) {
        host.disappear();
        host.refuses = true;
        host.items.clear();
        host.appear();
        EXPECT_TRUE(eventually([&] { return host.items.size() == 1; }));
        host.disappear();
        host.refuses = false;
        showIcon();
    }
    EXPECT_EQ(log.count("refused the icon: not on my panel"), 1U);
}

TEST_F(StatusNotifierItemTest, DescribesItselfAsHostsExpect)
{
    icon.show({62, true, "62 % \xff"}); // not UTF-8: the bus would hang up on it
    showIcon();
    EXPECT_EQ(text("Status"), "Active");
    EXPECT_EQ(text("IconAccessibleDesc"), "62 % ?");
    EXPECT_EQ(text("IconName"), "velmora-tray-060-charging-symbolic");
    EXPECT_TRUE(ask(itemPath, properties, "GetAll", "s", itemInterface));
    EXPECT_TRUE(ask(menuPath, properties, "GetAll", "s", menuInterface));

    const auto tip = ask(itemPath, properties, "Get", "ss", itemInterface, "ToolTip");
    const char *title = nullptr, *sentence = nullptr;
    ASSERT_GT(sd_bus_message_read(tip.get(), "v", "(sa(iiay)ss)", nullptr, 0, &title, &sentence), 0);
    EXPECT_STREQ(sentence, "62 % ?");

    const auto pictures = ask(itemPath, properties, "Get", "ss", itemInterface, "IconPixmap");
    ASSERT_GT(sd_bus_message_enter_container(pictures.get(), 'v', "a(iiay)"), 0);
    ASSERT_GT(sd_bus_message_enter_container(pictures.get(), 'a', "(iiay)"), 0);
    std::vector<int> sizes;
    while (sd_bus_message_enter_container(pictures.get(), 'r', "iiay") > 0) {
        int width = 0, height = 0;
        std::size_t bytes = 0;
        const void* data = nullptr;
        sd_bus_message_read(pictures.get(), "ii", &width, &height);
        sd_bus_message_read_array(pictures.get(), 'y', &data, &bytes);
        EXPECT_EQ(bytes, static_cast<std::size_t>(4 * width * height));
        EXPECT_EQ(static_cast<const unsigned char*>(data)[0], 0); // alpha comes first; the corner has none
        sizes.push_back(width);
        sd_bus_message_exit_container(pictures.get());
    }
    EXPECT_THAT(sizes, ElementsAre(16, 22, 24, 32, 48));
}

TEST_F(StatusNotifierItemTest, TellsOnlyWhatChanged)
{
    showIcon();
    icon.show({50, false, "half"});
    icon.show({50, false, "half"});
    icon.show({50.2, false, "half"});
    icon.show({50.2, true, "half"});
    icon.show({50.2, true, "half, charging"});
    icon.show({51, true, "half, charging"});
    EXPECT_TRUE(eventually([&] { return host.news.size() >= 5; }));
    EXPECT_THAT(host.news, ElementsAre("NewIcon", "NewToolTip", "NewIcon", "NewToolTip", "NewIcon"));

    host.news.clear();
    const auto turn = [&](const char* key) {
        dbus::check(sd_bus_emit_signal(host.bus(), "/org/freedesktop/portal/desktop",
                                       "org.freedesktop.portal.Settings", "SettingChanged", "ssv",
                                       "org.freedesktop.appearance", key, "u", 1U),
                    key);
    };
    turn("color-scheme"); // of a stranger
    dbus::check(sd_bus_request_name(host.bus(), "org.freedesktop.portal.Desktop", 0), "name");
    EXPECT_EQ(text("Id"), "velmora"); // by now it knows the portal
    turn("accent-color");
    turn("color-scheme");
    icon.show({52, true, "half, charging"});
    EXPECT_TRUE(eventually([&] { return host.news.size() >= 2; }));
    EXPECT_EQ(text("Id"), "velmora");
    EXPECT_EQ(host.news.size(), 2U) << "one for the portal, one for the level";
}

TEST_F(StatusNotifierItemTest, ClicksTellWhereTheyWere)
{
    showIcon();
    EXPECT_TRUE(ask(itemPath, itemInterface, "ProvideXdgActivationToken", "s", "token"));
    EXPECT_TRUE(ask(itemPath, itemInterface, "Activate", "ii", 1269, 14));
    EXPECT_TRUE(ask(itemPath, itemInterface, "SecondaryActivate", "ii", 0, 0));
    EXPECT_TRUE(ask(itemPath, itemInterface, "ContextMenu", "ii", -5, 2'000'000'000));
    EXPECT_TRUE(ask(itemPath, itemInterface, "Scroll", "is", 120, "vertical"));
    EXPECT_THAT(events, ElementsAre("1269,14", "somewhere", "-5,2000000000"));
    EXPECT_EQ(icon.takeActivationToken(), "token");
}

TEST_F(StatusNotifierItemTest, OffersAMenu)
{
    showIcon();
    EXPECT_THAT(menu(), ElementsAre("Velmora off", "separator", "Limit to 80% off radio on",
                                    "Limit to 90% off radio", "Full Charge (100%) off radio",
                                    "Auto-Protect off checkmark on", "Quick Charge to 100% off", "separator",
                                    "Open Velmora", "Launch Dashboard", "separator", "Quit Velmora"));
    EXPECT_TRUE(ask(menuPath, menuInterface, "Event", "isvu", 4, "clicked", "i", 0, 0)); // not to be chosen
    icon.show({.tooltip = "62%, \xff", .takesLimit = true, .limit = 90, .isAutoProtectOn = false});
    ASSERT_TRUE(eventually([&] { return host.news.size() == 2; })) << "the menu's, once, and the tooltip's";
    const auto entries = menu();
    EXPECT_EQ(entries[0], "62%, ? off");
    EXPECT_EQ(entries[3], "Limit to 90% radio on");
    EXPECT_EQ(entries[5], "Auto-Protect checkmark");

    EXPECT_TRUE(ask(menuPath, menuInterface, "AboutToShowGroup", "ai", 2, 0, 77));
    EXPECT_TRUE(ask(menuPath, menuInterface, "Event", "isvu", 10, "clicked", "i", 0, 0));
    EXPECT_TRUE(ask(menuPath, menuInterface, "Event", "isvu", 9, "hovered", "i", 0, 0));
    EXPECT_TRUE(ask(menuPath, menuInterface, "EventGroup", "a(isvu)", 6, 9, "clicked", "i", 0, 0, 9,
                    "clicked", "s", "", 0, 99, "clicked", "i", 0, 0, 5, "clicked", "i", 0, 0, 6, "clicked",
                    "i", 0, 0, 12, "clicked", "i", 0, 0));
    EXPECT_THAT(events, ElementsAre("dashboard", "panel", "100", "protect", "quit"));

    EXPECT_FALSE(ask(menuPath, menuInterface, "GetLayout", "iias", -1, -1, 0));
    EXPECT_FALSE(ask(menuPath, menuInterface, "AboutToShow", "i", 13));
}

} // namespace
} // namespace velmora
