// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/ChargeEvent.h"
#include "wire/ChargerReport.h"
#include "wire/VelmoraProtocol.h"

namespace velmora {

/// Why a change was refused.
enum class Refused : std::uint8_t {
    invalid,       ///< a value that cannot be
    denied,        ///< by the machine's rules, or by the person who was asked for a password
    needsPassword, ///< an administrator's, and nobody could be asked for it
    unavailable,   ///< nobody is there to decide who may
    superseded,    ///< a newer request of the same client took its place
};

/// On the wire, in the order of Refused.
inline constexpr std::array refusedTexts{"invalid", "denied", "needs password", "unavailable", "superseded"};
constexpr const char* textOf(Refused why)
{
    return refusedTexts.at(static_cast<std::size_t>(why));
}

} // namespace velmora

/// app.velmora.Charger, which the daemon serves beside its protocol. Its properties are those of
/// ChargerReport; these are its methods and its signal. A settings dictionary has the names and types of
/// `allSettings`.
namespace velmora::wire::charger {

inline constexpr auto interface = ChargerReport::interface;

inline constexpr std::array settings{Argument{"settings", recordType}};
inline constexpr std::array changes{Argument{"changes", recordType}};
inline constexpr std::array actions{Argument{"actions", recordListType}};

/// All settings as they are held: the machine's, and the calling user's own.
inline constexpr Message getSettings{"GetSettings", {}, settings};
/// Changes the settings that are named and no other, all of them or none; answers with all as they are then
/// held. InvalidArgs for a name, type or value that is not good, AccessDenied without the rights, and
/// InteractiveAuthorizationRequired where an administrator's password would give them: call again with leave
/// to ask for it.
inline constexpr Message setSettings{"SetSettings", changes, settings};
/// Charging stops until it is resumed, a charger is plugged in or a setting changes. Done twice it does no
/// more than once; answers whether charging is allowed then. Errors as of `setSettings`.
inline constexpr Message pauseCharging{"PauseCharging", {}, daemon_protocol::chargingReply};
/// Ends a pause, and does nothing where there is none; answers likewise.
inline constexpr Message resumeCharging{"ResumeCharging", {}, daemon_protocol::chargingReply};
/// What was done to the charger since the daemon was started, the newest last and twenty at most: records of
/// ChargerAction.
inline constexpr Message getActions{"GetActions", {}, actions};
/// Starts a quick charge before a journey: one that nobody is sitting in front of, so that a hot battery may
/// interrupt it. Answers whether one is under way then: false while charging is paused, by a person or for
/// heat, which this does not end. Errors as of `setSettings`. It is taken back like any other, by the
/// override's setting.
inline constexpr std::array isBegun{Argument{"isBegun", "b"}};
inline constexpr Message beginTravelCharge{"BeginTravelCharge", {}, isBegun};
inline constexpr std::array messages{&getSettings,    &setSettings, &pauseCharging,
                                     &resumeCharging, &getActions,  &beginTravelCharge};

/// These settings have changed. Sent to all for the machine's; for a user's own only to that user's
/// connections which have asked for them. A client whose message was refused or was not followed is sent all
/// settings as they are.
inline constexpr Message settingsChanged{"SettingsChanged", changes, {}};

inline constexpr std::array reason{Argument{"reason", "s"}};
/// What this client sent one way was refused; the reason is one of `refusedTexts`. Sent to that client alone,
/// after the settings as they are.
inline constexpr Message changeRefused{"ChangeRefused", reason, {}};

/// Something has happened that may be worth a notice: a record of ChargeEvent. Sent to all, once.
inline constexpr std::array event{Argument{"event", recordType}};
inline constexpr Message occurred{"Occurred", event, {}};

} // namespace velmora::wire::charger
