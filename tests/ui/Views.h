// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteModel.h"
#include "desktop/Appearance.h"

#include <QAccessible>
#include <QDBusVariant>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

void qml_register_types_Velmora();

namespace velmora {

/// A window of the views at a time, and a person before it. A path is "outer/inner", by object names.
class Views : public testing::Test {
protected:
    /// `now` as RemoteModel has it.
    template <typename... Now>
    explicit Views(const char* appearance = "light", Now... now) : model(now...)
    {
        qputenv("VELMORA_APPEARANCE", appearance);
        qml_register_types_Velmora();
        engine.addImportPath("qrc:/qt/qml");
    }

    void TearDown() override { window.reset(); } // it may say something to what a test keeps

    template <typename T>
    T* singleton(const char* name)
    {
        return engine.singletonInstance<T*>(qmlTypeId("Velmora", 1, 0, name));
    }
    void setTypeScale(double scale)
    {
        QMetaObject::invokeMethod(singleton<Appearance>("Appearance"), "settingChanged",
                                  Q_ARG(QString, "org.gnome.desktop.interface"),
                                  Q_ARG(QString, "text-scaling-factor"),
                                  Q_ARG(QDBusVariant, QDBusVariant(scale)));
    }

    /// One of the windows, over the model and not shown yet.
    void makeWindow(const QString& name)
    {
        window.reset(make<QQuickWindow>(name, {{"battery", QVariant::fromValue(&model)}}));
        ASSERT_TRUE(window);
    }
    void show()
    {
        window->show();
        window->requestActivate();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    /// A component alone in a window; nothing, and a failure, where it cannot be made.
    QQuickItem* showComponent(const QString& name, const QVariantMap& properties, QSize size)
    {
        auto* component = make<QQuickItem>(name, properties);
        if (!component) return nullptr;
        window = std::make_unique<QQuickWindow>();
        window->resize(size);
        component->setSize(size);
        component->setParent(window->contentItem());
        component->setParentItem(window->contentItem());
        show();
        return component;
    }

    /// All that stands below it, as it is drawn.
    static QList<QQuickItem*> below(const QQuickItem* top)
    {
        QList<QQuickItem*> items;
        for (auto* child : top->childItems()) items << child << below(child);
        return items;
    }
    static QQuickItem* find(const QQuickItem* top, const QString& path)
    {
        const auto name = path.section('/', 0, 0);
        for (auto* one : below(top))
            if (one->objectName() == name) return name == path ? one : find(one, path.section('/', 1));
        return nullptr;
    }
    QQuickItem* find(const QString& path) const { return find(window->contentItem(), path); }
    /// One that must be there.
    QQuickItem* item(const QString& path) const
    {
        auto* found = find(path);
        if (!found) throw std::runtime_error("there is no " + path.toStdString());
        return found;
    }
    QString property(const QString& path, const char* name) const
    {
        return item(path)->property(name).toString();
    }
    static QRectF box(const QQuickItem* one) { return one->mapRectToScene(one->boundingRect()); }
    QRectF box(const QString& path) const { return box(item(path)); }
    QAccessibleInterface* voice(const QString& path) const
    {
        return QAccessible::queryAccessibleInterface(item(path));
    }
    static void expectNoTextCut(const QQuickItem* top)
    {
        for (const auto* one : below(top))
            EXPECT_FALSE(one->isVisible() && one->property("truncated").toBool())
                << one->property("text").toString().toStdString();
    }

    QPoint place(const QString& path, double part = 0.5) const
    {
        const auto* target = item(path);
        return target->mapToScene({target->width() * part, target->height() / 2}).toPoint();
    }
    void click(const QString& path) { QTest::mouseClick(window.get(), Qt::LeftButton, {}, place(path)); }
    void press(int key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window.get(), Qt::Key(key), modifiers);
    }

    RemoteModel model;
    QQmlEngine engine;
    std::unique_ptr<QQuickWindow> window;

private:
    template <typename T>
    T* make(const QString& name, const QVariantMap& properties)
    {
        QQmlComponent component(&engine, QUrl("qrc:/qt/qml/Velmora/" + name + ".qml"));
        auto* made = qobject_cast<T*>(component.createWithInitialProperties(properties));
        EXPECT_TRUE(made) << component.errorString().toStdString();
        return made;
    }
};

} // namespace velmora
