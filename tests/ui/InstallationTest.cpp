// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Views.h"
#include "client/RemoteInstallation.h"
#include "client/RemoteVersionNotice.h"

namespace velmora {
namespace {

/// The dashboard's window, as yet without news from the application.
struct MainWindow : Views {
    void SetUp() override
    {
        installation = singleton<RemoteInstallation>("InstallationManager");
        notice = singleton<RemoteVersionNotice>("VersionNotice");
        const auto asks = [this](const QString& name, const QVariant& value = {}) {
            asked << name + (value.isValid() ? "=" + value.toString() : "");
        };
        QObject::connect(installation, &RemoteObject::operationWanted, asks);
        QObject::connect(notice, &RemoteObject::operationWanted, asks);
        QObject::connect(notice, &RemoteObject::setWanted, asks);
        makeWindow("DashboardWindow");
    }
    void show(bool isInstalled)
    {
        installation->apply({{"isInstallationCompleted", isInstalled}});
        Views::show();
        EXPECT_EQ(asked.join(' '), "appeared");
    }
    QQuickItem* content() const { return find("content")->property("item").value<QQuickItem*>(); }
    QString view() const
    {
        return content() ? QString(content()->metaObject()->className()).section('_', 0, 0) : "";
    }
    bool isSheetOpen() const { return find("answer") && find("answer")->isVisible(); }

    /// Whether a reader comes by a dialogue of this name.
    static bool hears(const char* name, QAccessibleInterface* in)
    {
        if (in->role() == QAccessible::Dialog && in->text(QAccessible::Name) == name) return true;
        for (int i = 0; i < in->childCount(); ++i)
            if (!in->child(i)->state().invisible && hears(name, in->child(i))) return true;
        return false;
    }

    RemoteInstallation* installation = nullptr;
    RemoteVersionNotice* notice = nullptr;
    QStringList asked;
};

TEST_F(MainWindow, ShowsTheRightViewAtOnceAndNeitherBeforeThatIsKnown)
{
    EXPECT_EQ(view(), "");
    show(false);
    EXPECT_EQ(view(), "InstallationView");
    EXPECT_EQ(window->size(), QSize(600, 450));
    window->resize(1000, 500);                        // by a person, or a window manager that tiles
    installation->apply({{"isDaemonPresent", true}}); // with a service manager that knows nothing of it
    EXPECT_EQ(view(), "DashboardView");
    installation->apply({{"isInstallationCompleted", true}, {"isDaemonPresent", false}});
    EXPECT_EQ(view(), "DashboardView");
    EXPECT_EQ(window->size(), QSize(1000, 600));
    auto* dashboard = content();
    installation->apply({{"isInstalling", false}});
    EXPECT_EQ(content(), dashboard) << "no news for it";
    EXPECT_TRUE(dashboard->hasActiveFocus());
}

TEST_F(MainWindow, InstallsOnceByPointerAndKeysAndAgainAfterAFailure)
{
    show(false);
    QObject::connect(installation, &RemoteObject::operationWanted, [this] {
        installation->apply({{"isInstalling", true}, {"installationProgress", 0.1}});
    });
    const std::function<void()> ways[] = {
        [&] { press(Qt::Key_Return); },
        [&] { press(Qt::Key_Space); },
        [&] { QTest::mouseDClick(window.get(), Qt::LeftButton, {}, place("install")); },
    };
    for (const auto& way : ways) {
        asked.clear();
        EXPECT_TRUE(item("install")->hasActiveFocus());
        way();
        press(Qt::Key_Return);
        EXPECT_EQ(asked.join(' '), "install");
        EXPECT_EQ(item("progress")->property("value"), 0.1);
        installation->apply({{"isInstalling", false}, {"installationProgress", 0.0}});
        EXPECT_TRUE(item("install")->isVisible());
    }
}

TEST_F(MainWindow, NoticeGoesWithItsButtonForGoodAndWithEscapeForNow)
{
    show(true);
    for (const auto& [key, wish] : {std::pair(Qt::Key_Escape, "showMacOS264Banner=false"),
                                    {Qt::Key_Return, "dismissed showMacOS264Banner=false"}}) {
        asked.clear();
        notice->apply({{"showMacOS264Banner", true}});
        EXPECT_TRUE(
            hears("Apple Added a Charge Limiter", QAccessible::queryAccessibleInterface(window.get())));
        for (int tabs = 0; tabs < 3; ++tabs) {
            EXPECT_TRUE(find("answer")->hasActiveFocus()) << "it stays in the sheet";
            press(Qt::Key_Tab);
        }
        QTest::mouseClick(window.get(), Qt::LeftButton, {}, {20, 20});
        EXPECT_TRUE(isSheetOpen());
        press(key);
        EXPECT_EQ(asked.join(' '), wish);
        notice->apply({{"hasSeenMacOS264Banner", true}});
        EXPECT_FALSE(isSheetOpen());
        EXPECT_TRUE(find("content")->hasFocus());
    }
}

TEST_F(MainWindow, SmallestWindowHasRoomForLargeType)
{
    show(false);
    for (const double scale : {1.0, 1.5}) {
        SCOPED_TRACE(scale);
        setTypeScale(scale);
        for (const bool hasNotice : {false, true}) {
            notice->apply({{"showMacOS264Banner", hasNotice}});
            ASSERT_TRUE(QTest::qWaitFor([&] { return isSheetOpen() == hasNotice; }));
            window->grabWindow(); // and so lays out
            EXPECT_LE(box(hasNotice ? "answer" : "install").bottom(), 450);
            expectNoTextCut(window->contentItem());
            EXPECT_EQ(find(hasNotice ? "reasons" : "scroll")->property("interactive").toBool(),
                      hasNotice && scale > 1);
        }
    }
}

} // namespace
} // namespace velmora
