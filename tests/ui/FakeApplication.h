// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "PrivateBus.h"
#include "wire/ModelFace.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariantMap>

namespace velmora {

/// Poses as the resident application, on a bus of its own.
class FakeApplication : public QDBusVirtualObject {
public:
    FakeApplication()
    {
        qDBusRegisterMetaType<QList<QVariantMap>>();
        bus.registerVirtualObject(wire::face::objectPath, this);
        bus.registerService(wire::face::serviceName);
    }
    ~FakeApplication() override
    {
        QDBusConnection::disconnectFromBus("application");
        QDBusConnection::disconnectFromBus("windows");
    }

    void leave() { bus.unregisterService(wire::face::serviceName); }

    void announce(const QVariantMap& changed, const QStringList& invalidated = {})
    {
        auto signal = QDBusMessage::createSignal(wire::face::objectPath, "org.freedesktop.DBus.Properties",
                                                 "PropertiesChanged");
        bus.send(signal << QString(wire::face::interface) << changed << invalidated);
    }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& from) override
    {
        const auto arguments = call.arguments();
        const auto value = qvariant_cast<QDBusVariant>(arguments.value(2)).variant();
        if (call.member() == "GetAll") {
            if (!news.isEmpty()) announce(news);
            isRead = true;
            return from.send(call.createReply(QVariant(beside.value(arguments[0].toString(), properties))));
        }
        if (call.member() == "Get")
            return from.send(call.createReply(
                QVariant::fromValue(QDBusVariant(properties.value(arguments.value(1).toString())))));
        if (call.signature() == QLatin1String("a{sv}")) records << qdbus_cast<QVariantMap>(arguments[0]);
        calls << (call.member() == "Set" ? arguments[1].toString() + "=" + value.toString() + value.typeName()
                                         : call.member() + arguments.value(0).toString());
        return from.send(call.createReply());
    }
    QString introspect(const QString&) const override { return {}; }

    PrivateBus daemon;
    QDBusConnection bus = QDBusConnection::connectToBus(daemon.address().c_str(), "application");
    /// Whom the application serves.
    QDBusConnection other = QDBusConnection::connectToBus(daemon.address().c_str(), "windows");
    QVariantMap properties;
    /// Those of objects beside the model, by interface; a test registers the paths.
    QMap<QString, QVariantMap> beside;
    QVariantMap news;           ///< of the model, told each time before all values are
    bool isRead = false;        ///< all values of an object
    QStringList calls;          ///< all but reading
    QList<QVariantMap> records; ///< that came with them
};

} // namespace velmora
