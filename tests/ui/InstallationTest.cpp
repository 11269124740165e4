// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Appearance.h"
#include "RemoteInstallation.h"
#include "RemoteModel.h"
#include "RemoteVersionNotice.h"

#include <QAccessible>
#include <QDBusVariant>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <gtest/gtest.h>

void qml_register_types_Velmora();

namespace velmora {
namespace {

/// The dashboard's window, as yet without news from the application.
struct MainWindow : testing::Test {
    void SetUp() override
    {
        qputenv("VELMORA_APPEARANCE", "light");
        qml_register_types_Velmora();
        engine.addImportPath("qrc:/qt/qml");
        installation = singleton<RemoteInstallation>("InstallationManager");
        notice = singleton<RemoteVersionNotice>("VersionNotice");
        const auto asks = [this](const QString& name, const QVariant& value = {}) {
            asked << name + (value.isValid() ? "=" + value.toString() : "");
        };
        QObject::connect(installation, &RemoteObject::operationWanted, asks);
        QObject::connect(notice, &RemoteObject::operationWanted, asks);
        QObject::connect(notice, &RemoteObject::setWanted, asks);
        QQmlComponent component(&engine, QUrl("qrc:/qt/qml/Velmora/DashboardWindow.qml"));
        window.reset(qobject_cast<QQuickWindow*>(
            component.createWithInitialProperties({{"battery", QVariant::fromValue(&model)}})));
        ASSERT_TRUE(window) << component.errorString().toStdString();
    }
    template <typename T>
    T* singleton(const char* name)
    {
        return engine.singletonInstance<T*>(qmlTypeId("Velmora", 1, 0, name));
    }
    void show(bool isInstalled)
    {
        installation->apply({{"isInstallationCompleted", isInstalled}});
        window->show();
        window->requestActivate();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        EXPECT_EQ(asked.join(' '), "appeared");
    }
    static QList<QQuickItem*> below(const QQuickItem* top)
    {
        QList<QQuickItem*> items;
        for (auto* child : top->childItems()) items << child << below(child);
        return items;
    }
    QQuickItem* find(const QString& name) const
    {
        for (auto* one : below(window->contentItem()))
            if (one->objectName() == name) return one;
        return nullptr;
    }
    QQuickItem* content() const { return find("content")->property("item").value<QQuickItem*>(); }
    QString view() const
    {
        return content() ? QString(content()->metaObject()->className()).section('_', 0, 0) : "";
    }
    bool isSheetOpen() const { return find("answer") && find("answer")->isVisible(); }
    void press(int key) { QTest::keyClick(window.get(), Qt::Key(key)); }

    /// What a reader comes by: role and name, a line each.
    QStringList heard(QAccessibleInterface* top = nullptr) const
    {
        if (!top) top = QAccessible::queryAccessibleInterface(window.get());
        QStringList lines;
        for (int i = 0; i < top->childCount(); ++i) {
            auto* child = top->child(i);
            if (child->state().invisible) continue;
            const auto* role = QMetaEnum::fromType<QAccessible::Role>().valueToKey(child->role());
            if (const auto name = child->text(QAccessible::Name); !name.isEmpty())
                lines << role + (": " + name);
            lines << heard(child);
        }
        return lines;
    }

    RemoteModel model;
    QQmlEngine engine;
    RemoteInstallation* installation = nullptr;
    RemoteVersionNotice* notice = nullptr;
    QStringList asked;
    std::unique_ptr<QQuickWindow> window;
};

TEST_F(MainWindow, ShowsTheRightViewAtOnceAndNeitherBeforeThatIsKnown)
{
    EXPECT_EQ(view(), "");
    show(false);
    EXPECT_EQ(view(), "InstallationView");
    EXPECT_EQ(window->size(), QSize(600, 450));
    window->resize(1000, 500); // by a person, or a window manager that tiles
    installation->apply({{"isInstallationCompleted", true}});
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
        [&] {
            QTest::mouseDClick(window.get(), Qt::LeftButton, {},
                               find("install")->mapToScene({120, 24}).toPoint());
        },
    };
    for (const auto& way : ways) {
        asked.clear();
        EXPECT_TRUE(find("install")->hasActiveFocus());
        way();
        press(Qt::Key_Return);
        EXPECT_EQ(asked.join(' '), "install");
        EXPECT_EQ(find("progress")->property("value"), 0.1);
        installation->apply({{"isInstalling", false}, {"installationProgress", 0.0}});
        EXPECT_TRUE(find("install")->isVisible());
    }
}

TEST_F(MainWindow, SaysWhatItIsAbout)
{
    show(false);
    QStringList lines{
        "Heading: System Installation Required",
        "StaticText: To manage your MacBook's hardware charging limits, Velmora needs to install a "
        "background helper tool. This requires your permission."};
    EXPECT_EQ(heard().join('\n'),
              (lines + QStringList{"Button: Grant Access & Install",
                                   "StaticText: Standard macOS security prompt will follow"})
                  .join('\n'));
    installation->apply({{"isInstalling", true}});
    EXPECT_EQ(heard().join('\n'), (lines << "ProgressBar: Installing background services...").join('\n'));
}

TEST_F(MainWindow, NoticeGoesWithItsButtonForGoodAndWithEscapeForNow)
{
    show(true);
    for (const auto& [key, wish] : {std::pair(Qt::Key_Escape, "showMacOS264Banner=false"),
                                    {Qt::Key_Return, "dismissed showMacOS264Banner=false"}}) {
        asked.clear();
        notice->apply({{"showMacOS264Banner", true}});
        EXPECT_TRUE(heard().contains("Dialog: Apple Added a Charge Limiter"));
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
        QMetaObject::invokeMethod(singleton<Appearance>("Appearance"), "settingChanged",
                                  Q_ARG(QString, "org.gnome.desktop.interface"),
                                  Q_ARG(QString, "text-scaling-factor"),
                                  Q_ARG(QDBusVariant, QDBusVariant(scale)));
        for (const bool hasNotice : {false, true}) {
            notice->apply({{"showMacOS264Banner", hasNotice}});
            ASSERT_TRUE(QTest::qWaitFor([&] { return isSheetOpen() == hasNotice; }));
            window->grabWindow(); // and so lays out
            const auto* main = find(hasNotice ? "answer" : "install");
            EXPECT_LE(main->mapRectToScene(main->boundingRect()).bottom(), 450);
            for (const auto* one : below(window->contentItem()))
                EXPECT_FALSE(one->isVisible() && one->property("truncated").toBool())
                    << one->property("text").toString().toStdString();
            EXPECT_EQ(find(hasNotice ? "reasons" : "scroll")->property("interactive").toBool(),
                      hasNotice && scale > 1);
        }
    }
}

} // namespace
} // namespace velmora
