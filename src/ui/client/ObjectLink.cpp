// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/ObjectLink.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <algorithm>
#include <optional>

namespace velmora {

namespace {

constexpr auto category = "ObjectLink";
const auto service = QString::fromLatin1(wire::face::serviceName);
const auto properties = QStringLiteral("org.freedesktop.DBus.Properties");

bool isNobody(const QDBusMessage& reply)
{
    return reply.errorName() == "org.freedesktop.DBus.Error.ServiceUnknown" ||
           reply.errorName() == "org.freedesktop.DBus.Error.NameHasNoOwner";
}

/// `value`, as QML has it, in the type that the wire wants; nothing where no view may write it.
std::optional<QVariant> encoded(const RemoteObject::Face& face, const QString& name, QVariant value)
{
    const auto property = std::ranges::find_if(
        face.properties, [&](const auto& one) { return name == QLatin1String(one.name); });
    if (property == face.properties.end() || property->access == wire::face::Access::read)
        return std::nullopt;
    if (!value.convert(wired::typeOf(property->type))) return std::nullopt;
    return value;
}

} // namespace

ObjectLink::ObjectLink(const QDBusConnection& bus, RemoteObject& mirror, QObject* parent)
    : QObject(parent),
      bus_(bus),
      mirror_(mirror),
      path_(QString::fromLatin1(mirror.face().path)),
      interface_(QString::fromLatin1(mirror.face().interface))
{
    connect(&mirror, &RemoteObject::setWanted, this, &ObjectLink::set);
    connect(&mirror, &RemoteObject::operationWanted, this,
            [this](const QString& operation) { call(operation); });
    connect(&mirror, &RemoteObject::recordOperationWanted, this,
            [this](const QString& operation, const QVariantMap& record) {
                call(interface_, operation, {record});
            });
    bus_.connect(service, path_, properties, QStringLiteral("PropertiesChanged"), this,
                 SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    fetchAll();
}

void ObjectLink::fetchAll()
{
    send(properties, QStringLiteral("GetAll"), {interface_}, [this](const QDBusMessage& reply) {
        if (reply.signature() == QLatin1String("a{sv}")) {
            mirror_.apply(qdbus_cast<QVariantMap>(reply.arguments().at(0)));
        } else {
            log_.warning(category, "velmora does not export " + interface_.toStdString() + ": " +
                                       reply.errorMessage().toStdString() + ". Showing defaults instead.");
            mirror_.giveUp();
        }
        isSettled_ = true;
        Q_EMIT settled();
    });
}

void ObjectLink::fetch(const QString& property)
{
    send(properties, QStringLiteral("Get"), {interface_, property},
         [this, property](const QDBusMessage& reply) {
             if (reply.signature() == QLatin1String("v"))
                 mirror_.apply({{property, reply.arguments().at(0).value<QDBusVariant>().variant()}});
         });
}

void ObjectLink::set(const QString& property, const QVariant& value)
{
    const auto written = encoded(mirror_.face(), property, value);
    if (!written)
        return log_.warning(category, "Refused to write " + property.toStdString() +
                                          ": it is read-only, or the value is invalid.");
    call(properties, QStringLiteral("Set"),
         {interface_, property, QVariant::fromValue(QDBusVariant(*written))});
}

void ObjectLink::call(const QString& operation)
{
    call(interface_, operation, {});
}

void ObjectLink::call(const QString& interface, const QString& method, const QVariantList& arguments)
{
    send(interface, method, arguments, [this, method](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ErrorMessage)
            log_.warning(category,
                         (method + " failed: " + reply.errorMessage() + QLatin1Char('.')).toStdString());
    });
}

void ObjectLink::propertiesChanged(const QString& interface, const QVariantMap& values,
                                   const QStringList& invalidated)
{
    if (interface != interface_ || !isSettled_) return; // all values are on their way
    if (!values.isEmpty()) mirror_.apply(values);
    for (const auto& property : invalidated) fetch(property);
}

void ObjectLink::send(const QString& interface, const QString& member, const QVariantList& arguments,
                      const Answer& answer)
{
    auto call = QDBusMessage::createMethodCall(service, path_, interface, member);
    call.setAutoStartService(false);
    call.setArguments(arguments);
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, answer] {
        watcher->deleteLater();
        const auto reply = watcher->reply();
        if (isNobody(reply))
            Q_EMIT gone();
        else
            answer(reply);
    });
}

} // namespace velmora
