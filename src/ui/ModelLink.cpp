// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ModelLink.h"

#include "ModelFace.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <algorithm>
#include <optional>

namespace velmora {

namespace {

constexpr auto category = "ModelLink";
const auto service = QString::fromLatin1(wire::face::serviceName);
const auto path = QString::fromLatin1(wire::face::objectPath);
const auto face = QString::fromLatin1(wire::face::interface);
const auto properties = QStringLiteral("org.freedesktop.DBus.Properties");
const auto application = QStringLiteral("org.freedesktop.Application");

bool isNobody(const QDBusMessage& reply)
{
    return reply.errorName() == "org.freedesktop.DBus.Error.ServiceUnknown" ||
           reply.errorName() == "org.freedesktop.DBus.Error.NameHasNoOwner";
}

/// `value`, as QML has it, in the type that the wire wants; nothing where no view may write it.
std::optional<QVariant> encoded(const QString& name, QVariant value)
{
    const auto property = std::ranges::find_if(
        wire::face::properties, [&](const auto& one) { return name == QLatin1String(one.name); });
    if (property == wire::face::properties.end() || property->access == wire::face::Access::read)
        return std::nullopt;
    const std::string_view type = property->type;
    const auto wanted = type == "b"   ? QMetaType::fromType<bool>()
                        : type == "d" ? QMetaType::fromType<double>()
                                      : QMetaType::fromType<QStringList>();
    if (!value.convert(wanted)) return std::nullopt;
    return value;
}

} // namespace

ModelLink::ModelLink(const QDBusConnection& bus, RemoteModel& model, QObject* parent)
    : QObject(parent),
      bus_(bus),
      model_(model),
      watcher_(service, bus, QDBusServiceWatcher::WatchForUnregistration)
{
    connect(&watcher_, &QDBusServiceWatcher::serviceUnregistered, this, &ModelLink::gone);
    connect(&model_, &RemoteModel::setWanted, this, &ModelLink::setProperty);
    connect(&model_, &RemoteModel::operationWanted, this, &ModelLink::callModel);
    bus_.connect(service, path, properties, QStringLiteral("PropertiesChanged"), this,
                 SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    fetchAll();
}

void ModelLink::activate(const QString& action)
{
    send(application, QStringLiteral("ActivateAction"), {action, QVariantList{}, QVariantMap{}}, {});
}

void ModelLink::quit()
{
    send(face, QString::fromLatin1(wire::face::quit), {}, {});
}

void ModelLink::fetchAll()
{
    send(properties, QStringLiteral("GetAll"), {face}, [this](const QDBusMessage& reply) {
        if (reply.signature() != QLatin1String("a{sv}"))
            return log_.warning(category,
                                "velmora's properties are no dictionary: what is shown is not real");
        model_.apply(qdbus_cast<QVariantMap>(reply.arguments().at(0)));
        isFed_ = true;
        Q_EMIT fed();
    });
}

void ModelLink::fetch(const QString& property)
{
    send(properties, QStringLiteral("Get"), {face, property}, [this, property](const QDBusMessage& reply) {
        if (reply.signature() == QLatin1String("v"))
            model_.apply({{property, reply.arguments().at(0).value<QDBusVariant>().variant()}});
    });
}

void ModelLink::setProperty(const QString& name, const QVariant& value)
{
    const auto written = encoded(name, value);
    if (!written) return log_.warning(category, "a view wrote what it cannot write: " + name.toStdString());
    send(properties, QStringLiteral("Set"), {face, name, QVariant::fromValue(QDBusVariant(*written))}, {});
}

void ModelLink::callModel(const QString& operation)
{
    send(face, operation, {}, {});
}

void ModelLink::propertiesChanged(const QString& interface, const QVariantMap& values,
                                  const QStringList& invalidated)
{
    if (interface != face) return;
    if (!values.isEmpty()) model_.apply(values);
    for (const auto& property : invalidated) fetch(property);
}

void ModelLink::send(const QString& interface, const QString& member, const QVariantList& arguments,
                     Answer answer)
{
    auto call = QDBusMessage::createMethodCall(service, path, interface, member);
    call.setAutoStartService(false);
    call.setArguments(arguments);
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, member, answer] {
        watcher->deleteLater();
        const auto reply = watcher->reply();
        if (isNobody(reply)) {
            Q_EMIT gone();
        } else if (reply.type() == QDBusMessage::ErrorMessage) {
            log_.warning(category, (member + " failed: " + reply.errorMessage()).toStdString());
        } else if (answer) {
            answer(reply);
        }
    });
}

} // namespace velmora
