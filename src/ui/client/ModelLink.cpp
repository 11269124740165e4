// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/ModelLink.h"

namespace velmora {

ModelLink::ModelLink(const QDBusConnection& bus, RemoteModel& model, QObject* parent)
    : QObject(parent),
      watcher_(QString::fromLatin1(wire::face::serviceName), bus,
               QDBusServiceWatcher::WatchForUnregistration),
      model_(bus, wire::face::model, [&model](const QVariantMap& values) { model.apply(values); }),
      charger_(bus, wire::face::charger::face,
               [&model](const QVariantMap& values) { model.applyCharger(values); })
{
    connect(&watcher_, &QDBusServiceWatcher::serviceUnregistered, this, &ModelLink::gone);
    connect(&model_, &FaceLink::gone, this, &ModelLink::gone);
    for (auto* link : {&model_, &charger_})
        connect(link, &FaceLink::settled, this, [this] {
            if (isFed()) Q_EMIT fed();
        });
    connect(&model, &RemoteModel::setWanted, &model_, &FaceLink::set);
    connect(&model, &RemoteModel::operationWanted, &model_,
            [this](const QString& operation) { model_.call(operation); });
}

void ModelLink::activate(const QString& action)
{
    model_.call(QStringLiteral("org.freedesktop.Application"), QStringLiteral("ActivateAction"),
                {action, QVariantList{}, QVariantMap{}});
}

void ModelLink::quit()
{
    model_.call(QString::fromLatin1(wire::face::quit));
}

} // namespace velmora
