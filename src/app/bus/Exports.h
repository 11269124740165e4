// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "account/AccountSetup.h"
#include "alerts/CalendarConsent.h"
#include "alerts/DeliveredNotices.h"
#include "alerts/NotificationStatus.h"
#include "alerts/TravelCharge.h"
#include "bus/ExportedObject.h"
#include "fleet/EcosystemSync.h"
#include "model/InstallationManager.h"
#include "model/VersionNotice.h"
#include "model/WidgetSettings.h"
#include "wire/ChargerReport.h"

#include <functional>
#include <optional>
#include <string>

/// Exports core objects on the session bus, beside the model. Each function binds what it is given to its
/// exported object; all must have the same lifetime. Throws std::system_error where the bus refuses the
/// object.
namespace velmora::exports {

/// `isDaemonPresent`: somebody serves the battery. That it may be otherwise, `derivedChanged` tells the
/// object.
void serve(ExportedObject& object, InstallationManager& manager, std::function<bool()> isDaemonPresent);
void serve(ExportedObject& object, VersionNotice& notice);
void serve(ExportedObject& object, WidgetSettings& widget);
void serve(ExportedObject& object, CalendarContextManager& calendar, CalendarConsent& consent,
           TravelCharge& travel);
void serve(ExportedObject& object, NotificationStatus& status, DeliveredNotices& delivered);

/// The account's manager is made when an operation needs it.
void serve(ExportedObject& object, AccountSetup& account);

/// `refresh` lists the fleet's devices anew.
void serve(ExportedObject& object, EcosystemSync& sync, CloudKitManager& manager,
           const std::function<void()>& refresh);

using ChargerSource = std::function<std::optional<ChargerReport>()>; ///< what is known now

/// The daemon's report, and why it refused what a person asked for last. Call the object's `derivedChanged`
/// when either may have changed.
void serve(ExportedObject& object, const ChargerSource& report, const std::function<std::string()>& refusal);

} // namespace velmora::exports
