// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/ObjectLink.h"

namespace velmora {

ObjectLink::ObjectLink(const QDBusConnection& bus, const Face& face, RemoteObject& mirror, QObject* parent)
    : FaceLink(
          bus, face, [&mirror](const QVariantMap& values) { mirror.apply(values); }, parent)
{
    connect(this, &FaceLink::settled, this, [this, &mirror] {
        if (!isFed()) mirror.giveUp();
    });
    connect(&mirror, &RemoteObject::setWanted, this, &FaceLink::set);
    connect(&mirror, &RemoteObject::operationWanted, this,
            [this](const QString& operation) { call(operation); });
}

} // namespace velmora
