// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteObject.h"

namespace velmora {

/// The installation of the daemon: wire::face::installation, as far as views show it.
class RemoteInstallation : public RemoteObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(InstallationManager)
    QML_SINGLETON
    /// Until then nobody can say which view is the right one.
    Q_PROPERTY(bool isKnown READ isKnown NOTIFY changed)
    Q_PROPERTY(bool isInstallationCompleted READ isInstallationCompleted NOTIFY changed)
    Q_PROPERTY(bool isInstalling READ isInstalling NOTIFY changed)
    Q_PROPERTY(double installationProgress READ installationProgress NOTIFY changed) ///< 0 to 1
public:
    using RemoteObject::RemoteObject;

    void apply(const QVariantMap& values) override;
    /// With nobody to install anything it counts as completed.
    void giveUp() override;

    /// Asks for the installation, unless that is under way.
    Q_INVOKABLE void install();

    bool isKnown() const { return isKnown_; }
    bool isInstallationCompleted() const { return isCompleted_; }
    bool isInstalling() const { return isInstalling_; }
    double installationProgress() const { return progress_; }

private:
    bool isKnown_ = false;
    bool isCompleted_ = false;
    bool isInstalling_ = false;
    double progress_ = 0;
};

} // namespace velmora
