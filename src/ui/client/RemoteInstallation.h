// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteObject.h"

namespace velmora {

/// The installation of the daemon: wire::face::installation, as far as views show it.
class RemoteInstallation : public velmora::RemoteObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(InstallationManager)
    QML_SINGLETON
    static constexpr const auto& table = wire::face::installation::properties;
    VELMORA_MIRRORED(bool, isInstallationCompleted)
    VELMORA_MIRRORED(bool, isDaemonPresent)
    VELMORA_MIRRORED(bool, isInstalling)
    Q_PROPERTY(double installationProgress READ installationProgress NOTIFY changed) ///< 0 to 1
    /// Until then nobody can say which view is the right one.
    Q_PROPERTY(bool isKnown READ isKnown NOTIFY changed)
public:
    explicit RemoteInstallation(QObject* parent = nullptr);

    /// With nobody to install anything it counts as completed.
    void giveUp() override;

    /// Asks for the installation, unless that is under way.
    Q_INVOKABLE void install();

    double installationProgress() const;
    bool isKnown() const { return isFed(); }
};

} // namespace velmora
