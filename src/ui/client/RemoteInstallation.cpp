// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteInstallation.h"

#include <algorithm>

namespace velmora {

namespace wiring = wire::face::installation;

RemoteInstallation::RemoteInstallation(QObject* parent) : RemoteObject(wiring::face, parent) {}

double RemoteInstallation::installationProgress() const
{
    return std::clamp(value("installationProgress").toDouble(), 0.0, 1.0);
}

void RemoteInstallation::giveUp()
{
    apply({{QStringLiteral("isInstallationCompleted"), true}});
}

void RemoteInstallation::install()
{
    if (!isInstalling()) Q_EMIT operationWanted(QString::fromLatin1(wiring::install));
}

} // namespace velmora
