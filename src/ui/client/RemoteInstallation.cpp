// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteInstallation.h"

#include "wire/ModelFace.h"

#include <algorithm>

namespace velmora {

void RemoteInstallation::apply(const QVariantMap& values)
{
    take(values, "isInstallationCompleted", isCompleted_);
    take(values, "isInstalling", isInstalling_);
    take(values, "installationProgress", progress_);
    progress_ = std::clamp(progress_, 0.0, 1.0);
    isKnown_ = true;
    Q_EMIT changed();
}

void RemoteInstallation::giveUp()
{
    isCompleted_ = true;
    isKnown_ = true;
    Q_EMIT changed();
}

void RemoteInstallation::install()
{
    if (!isInstalling_) Q_EMIT operationWanted(QString::fromLatin1(wire::face::installation::install));
}

} // namespace velmora
