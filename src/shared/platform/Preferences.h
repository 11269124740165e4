// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <string>
#include <string_view>

namespace velmora {

/// The user's stored preferences, by key. Main thread only.
class Preferences {
public:
    virtual ~Preferences() = default;

    /// False where it was never set.
    virtual bool boolean(std::string_view key) const = 0;

    /// Holds at once, and over the next start unless the machine's power fails within moments. Never waits
    /// for a disk.
    virtual void set(std::string_view key, bool value) = 0;

    /// Likewise a text, on one line, of printable ASCII characters. Empty where it was never set.
    virtual std::string text(std::string_view key) const = 0;
    virtual void setText(std::string_view key, std::string_view value) = 0;
};

/// The keys in use, beside those of WidgetSettings.
namespace preference_key {
inline constexpr std::string_view daemonInstalled = "Velmora_DaemonInstalled";
inline constexpr std::string_view isLowBatteryNoticeOff = "isLowBatteryNoticeOff";
inline constexpr std::string_view isCalendarConsentGiven = "isCalendarConsentGiven";
inline constexpr std::string_view isTravelChargeOn = "isTravelChargeOn";
inline constexpr std::string_view travelCharges = "travelCharges";       ///< events whose charge has begun
inline constexpr std::string_view isLowBatteryTold = "isLowBatteryTold"; ///< in this dip
inline constexpr std::string_view hasSeenGnomeAdvice = "hasSeenGnomeAdvice";
inline constexpr std::string_view isEcosystemSyncOn = "isEcosystemSyncOn";
inline constexpr std::string_view refusesCommands = "refusesCommands"; ///< of other machines
inline constexpr std::string_view recordPlace = "recordPlace";         ///< one of recordPlaceKindTexts
inline constexpr std::string_view recordHost = "recordHost";
inline constexpr std::string_view recordPort = "recordPort";
inline constexpr std::string_view recordDatabase = "recordDatabase";
inline constexpr std::string_view recordUser = "recordUser";
inline constexpr std::string_view recordTrust = "recordTrust"; ///< one of recordTrustTexts
inline constexpr std::string_view recordPasswordFile = "recordPasswordFile";
inline constexpr std::string_view identityIssuer = "identityIssuer";
inline constexpr std::string_view identityClient = "identityClient";
inline constexpr std::string_view identityParameters = "identityParameters";
inline constexpr std::string_view hasIdentitySecret = "hasIdentitySecret"; ///< the secret store has it
inline constexpr std::string_view signedInSince = "signedInSince";         ///< seconds, as a Date has them
inline constexpr std::string_view isSignOutDue = "isSignOutDue"; ///< the secret store did not forget the user
inline constexpr std::string_view hasSeenVersionNotice = "hasSeenMacOS264Banner";
} // namespace preference_key

} // namespace velmora
