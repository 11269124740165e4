// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/ChargerReport.h"
#include "wire/VelmoraProtocol.h"

/// app.velmora.Charger, which the daemon serves beside its protocol. Its properties are those of
/// ChargerReport; these are its methods and its signal. A settings dictionary has the names and types of
/// `allSettings`.
namespace velmora::wire::charger {

inline constexpr auto interface = ChargerReport::interface;

inline constexpr std::array settings{Argument{"settings", recordType}};
inline constexpr std::array changes{Argument{"changes", recordType}};

/// All settings as they are held: the machine's, and the calling user's own.
inline constexpr Message getSettings{"GetSettings", {}, settings};
/// Changes the settings that are named and no other, all of them or none; answers with all as they are then
/// held. InvalidArgs for a name, type or value that is not good, AccessDenied without the rights.
inline constexpr Message setSettings{"SetSettings", changes, settings};
/// Charging stops until it is resumed, a charger is plugged in or a setting changes. Done twice it does no
/// more than once; answers whether charging is allowed then. AccessDenied without the rights.
inline constexpr Message pauseCharging{"PauseCharging", {}, daemon_protocol::chargingReply};
/// Ends a pause, and does nothing where there is none; answers likewise.
inline constexpr Message resumeCharging{"ResumeCharging", {}, daemon_protocol::chargingReply};
inline constexpr std::array messages{&getSettings, &setSettings, &pauseCharging, &resumeCharging};

/// These settings have changed. Sent to all for the machine's; for a user's own only to that user's
/// connections which have asked for them. A client whose message was refused or was not followed is sent all
/// settings as they are.
inline constexpr Message settingsChanged{"SettingsChanged", changes, {}};

} // namespace velmora::wire::charger
