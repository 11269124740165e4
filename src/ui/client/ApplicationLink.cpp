// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/ApplicationLink.h"

#include <algorithm>

namespace velmora {

ApplicationLink::ApplicationLink(const QDBusConnection& bus, RemoteModel& model, QObject* parent)
    : QObject(parent),
      bus_(bus),
      model_(model),
      watcher_(QString::fromLatin1(wire::face::serviceName), bus, QDBusServiceWatcher::WatchForUnregistration)
{
    connect(&watcher_, &QDBusServiceWatcher::serviceUnregistered, this, &ApplicationLink::gone);
    add(model);
    add(model.charger());
    connect(links_.front().get(), &ObjectLink::gone, this, &ApplicationLink::gone);
}

void ApplicationLink::add(RemoteObject& mirror)
{
    links_.push_back(std::make_unique<ObjectLink>(bus_, mirror));
    connect(links_.back().get(), &ObjectLink::settled, this, [this] {
        if (isReady()) Q_EMIT ready();
    });
}

bool ApplicationLink::isReady() const
{
    return model_.isFed() && std::ranges::all_of(links_, [](const auto& link) { return link->isSettled(); });
}

void ApplicationLink::activate(const QString& action)
{
    links_.front()->call(QStringLiteral("org.freedesktop.Application"), QStringLiteral("ActivateAction"),
                         {action, QVariantList{}, QVariantMap{}});
}

void ApplicationLink::quit()
{
    links_.front()->call(QString::fromLatin1(wire::face::quit));
}

} // namespace velmora
