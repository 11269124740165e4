// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "InstallationObject.h"

namespace velmora {

namespace wired = wire::face::installation;

InstallationObject::InstallationObject(MainLoop& loop, sd_bus* bus, InstallationManager& manager)
    : face_(loop, bus, wired::objectPath, wired::interface, wired::properties)
{
    face_.bind("isInstallationCompleted", manager.isInstallationCompleted);
    face_.bind("isInstalling", manager.isInstalling);
    face_.bind("installationProgress", manager.installationProgress);
    face_.bind("installationError", manager.installationError);
    face_.addOperation(wired::install, [&manager] { manager.begin(); });
    face_.serve();
}

} // namespace velmora
