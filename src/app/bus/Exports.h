// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/ExportedObject.h"
#include "model/InstallationManager.h"
#include "model/VersionNotice.h"
#include "model/WidgetSettings.h"
#include "wire/ChargerReport.h"

#include <functional>
#include <optional>

/// What stands on the session bus beside the model. Each binds something of the core to its object of the
/// face, and serves that; both live equally long. Throws std::system_error where the bus takes no objects.
namespace velmora::exports {

void serve(ExportedObject& object, InstallationManager& manager);
void serve(ExportedObject& object, VersionNotice& notice);
void serve(ExportedObject& object, WidgetSettings& widget);

using ChargerSource = std::function<std::optional<ChargerReport>()>; ///< what is known now

/// The daemon's report, passed on. That it may be another one, `derivedChanged` tells the object.
void serve(ExportedObject& object, const ChargerSource& report);

} // namespace velmora::exports
