// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "FaceObject.h"
#include "InstallationManager.h"

namespace velmora {

/// The installation on the session bus, beside the model: wire::face::installation. Main thread only.
class InstallationObject {
public:
    /// All must outlive the object. Throws std::system_error where the bus takes no objects.
    InstallationObject(MainLoop& loop, sd_bus* bus, InstallationManager& manager);
    InstallationObject(const InstallationObject&) = delete;
    InstallationObject& operator=(const InstallationObject&) = delete;

private:
    FaceObject face_;
};

} // namespace velmora
