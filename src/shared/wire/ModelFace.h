// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/ChargerReport.h"
#include "wire/VelmoraProtocol.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

/// What `velmora` serves on the session bus, declared once for it and for its windows: the model's face.
namespace velmora::wire::face {

inline constexpr auto serviceName = "app.velmora.Velmora";
inline constexpr auto objectPath = "/app/velmora/Velmora";
inline constexpr auto interface = "app.velmora.Model";

enum class Access : std::uint8_t {
    read,
    write,   ///< a view may set it; the daemon never learns it
    setting, ///< likewise, and the daemon is told at once
};

/// How a change is announced.
enum class News : std::uint8_t {
    value,       ///< PropertiesChanged carries it
    invalidated, ///< only its name: it is long, and who wants it asks
};

/// A property of the model under its own name. An optional is an array of at most one. A setting's number
/// lies within `lowest` to `highest`.
struct Property {
    const char* name;
    const char* type; ///< D-Bus signature
    Access access = Access::read;
    double lowest = 0;
    double highest = 0;
    News news = News::value;
};

/// An object of the face.
struct Face {
    const char* path;
    const char* interface;
    std::span<const Property> properties;
};

/// Those that the daemon holds. One that is asked for once is flipped by an operation instead.
inline constexpr auto settingProperties = [] {
    std::array<Property, allSettings.size()> rows{};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto& setting = allSettings[i];
        rows[i] = {setting.modelProperty, setting.type(), setting.isOneOff ? Access::read : Access::setting,
                   setting.lowest, setting.highest};
    }
    return rows;
}();

inline constexpr std::array otherProperties{
    Property{"percentage", "d"},
    Property{"chargingState", "s"},  ///< a raw text of velmora::ChargingState
    Property{"isLimitReached", "b"}, ///< derived
    Property{"thermalState", "s"},   ///< a raw text of ThermalMonitorService::ThermalState
    Property{"powerSource", "s"},
    Property{"timeToFull", "x"},
    Property{"timeToEmpty", "x"},
    Property{"timeToLimit", "x"},
    Property{"isSimulationModeEnabled", "b", Access::write},
    Property{"history", recordListType, Access::read, 0, 0, News::invalidated},
    Property{"notifyOnLowBattery", "b", Access::setting},
    Property{"lastCloudSyncDate", "ad"}, ///< seconds since 2001-01-01 UTC
    Property{"fleetStates", recordListType, Access::read, 0, 0, News::invalidated},
    Property{"selectedDeviceID", "as", Access::write},
};

inline constexpr auto properties = [] {
    std::array<Property, settingProperties.size() + otherProperties.size()> rows{};
    std::ranges::copy(otherProperties, std::ranges::copy(settingProperties, rows.begin()).out);
    return rows;
}();
inline constexpr Face model{objectPath, interface, properties};

/// The model's operations; no arguments, no result.
inline constexpr std::array operations{
    "fetchHistory",   "syncSettingsToDaemon",    "toggleAppleRecommendedMode",
    "toggleCharging", "toggleTemporaryOverride",
};

/// Ends the resident application, windows included; an operation beside those of the model.
inline constexpr auto quit = "Quit";

/// The actions of org.freedesktop.Application on the same object: each opens a window, but for the last.
inline constexpr auto panelAction = "panel";
inline constexpr auto dashboardAction = "dashboard";
inline constexpr auto smallWidgetAction = "small-widget";
inline constexpr auto mediumWidgetAction = "medium-widget";
inline constexpr auto quitAction = "quit";

} // namespace velmora::wire::face

/// The installation of the daemon, beside the model under the same name; see velmora::InstallationManager.
namespace velmora::wire::face::installation {

inline constexpr auto objectPath = "/app/velmora/InstallationManager";
inline constexpr auto interface = "app.velmora.InstallationManager";

inline constexpr std::array properties{
    Property{"isInstallationCompleted", "b"},
    Property{"isDaemonPresent", "b"}, ///< somebody serves the battery, whatever the service manager says
    Property{"isInstalling", "b"},
    Property{"installationProgress", "d"}, ///< 0 to 1
    Property{"installationError", "as"},
};
inline constexpr Face face{objectPath, interface, properties};

/// Registers the daemon, unless that is under way; what comes of it, the properties tell.
inline constexpr auto install = "install";

} // namespace velmora::wire::face::installation

/// The notice of the main window, beside the model under the same name; see velmora::VersionNotice.
namespace velmora::wire::face::notice {

inline constexpr auto objectPath = "/app/velmora/VersionNotice";
inline constexpr auto interface = "app.velmora.VersionNotice";

inline constexpr auto showMacOS264Banner = "showMacOS264Banner";
inline constexpr std::array properties{
    Property{"hasSeenMacOS264Banner", "b"},
    Property{showMacOS264Banner, "b", Access::write}, ///< false once the notice has closed
};
inline constexpr Face face{objectPath, interface, properties};

inline constexpr auto appeared = "appeared";   ///< the main window has
inline constexpr auto dismissed = "dismissed"; ///< the notice was answered

} // namespace velmora::wire::face::notice

/// What the laptop's charger can do and what is in force, as the daemon tells it: app.velmora.Charger of its
/// object, see velmora::ChargerReport. It stands beside the model for those who are no client of the daemon.
namespace velmora::wire::face::charger {

inline constexpr auto objectPath = "/app/velmora/Charger";
inline constexpr auto interface = ChargerReport::interface;
inline constexpr auto isKnown = "IsKnown"; ///< the daemon has told; the others are defaults until then
/// Why the daemon refused what a person asked for last, as one of velmora::refusedTexts; empty where it has
/// not.
inline constexpr auto refusal = "Refusal";

inline constexpr auto properties = [] {
    std::array<Property, chargerProperties.size() + 2> rows{Property{isKnown, "b"}, Property{refusal, "s"}};
    for (std::size_t i = 0; i < chargerProperties.size(); ++i)
        rows[i + 2] = {chargerProperties[i].name, chargerProperties[i].type()};
    return rows;
}();
inline constexpr Face face{objectPath, interface, properties};

} // namespace velmora::wire::face::charger

/// What the calendar tells of journeys, and the charge before them; see velmora::CalendarContextManager,
/// CalendarConsent and TravelCharge.
namespace velmora::wire::face::calendar {

inline constexpr auto objectPath = "/app/velmora/CalendarContextManager";
inline constexpr auto interface = "app.velmora.CalendarContextManager";

inline constexpr auto isConsentGiven = "isConsentGiven";
inline constexpr auto isTravelChargeOn = "isTravelChargeOn";
inline constexpr auto travelChargeStage = "travelChargeStage";
inline constexpr auto travelChargeBegins = "travelChargeBegins";
inline constexpr std::array properties{
    Property{isConsentGiven, "b", Access::write}, ///< a person lets the calendars be read
    Property{isTravelChargeOn, "b", Access::write},
    Property{"calendarAccessGranted", "b"},
    Property{"isTravelDayDetected", "b"},
    Property{"isLastScanWhole", "b"}, ///< all calendars were read
    Property{"detectedEventTitle", "as"},
    Property{travelChargeStage, "s"},   ///< one of TravelCharge::stageTexts
    Property{travelChargeBegins, "ad"}, ///< while it is scheduled: seconds since 2001-01-01 UTC
};
inline constexpr Face face{objectPath, interface, properties};

inline constexpr auto checkNow = "checkNow"; ///< a scan, soon; or access is asked for where there is none

} // namespace velmora::wire::face::calendar

/// The desktop's notices, beside the model under the same name; see velmora::NotificationStatus and
/// velmora::DeliveredNotices.
namespace velmora::wire::face::notifications {

inline constexpr auto objectPath = "/app/velmora/NotificationManager";
inline constexpr auto interface = "app.velmora.NotificationManager";

inline constexpr auto testResult = "testResult";
inline constexpr std::array properties{
    Property{"server", "s"}, ///< empty: none runs
    Property{"isServerStartable", "b"},
    Property{"isInhibited", "b"}, ///< do not disturb, as far as the server says so
    Property{testResult, "as"},   ///< of the last test notice: an empty text, or why it failed
    // When a notice of that kind was last delivered, in seconds since 2001-01-01 UTC.
    Property{"lastLimitNotice", "ad"},
    Property{"lastPowerNotice", "ad"},
    Property{"lastHeatNotice", "ad"},
    Property{"lastCycleNotice", "ad"},
    Property{"lastLowBatteryNotice", "ad"},
    Property{"lastTravelNotice", "ad"},
};
inline constexpr Face face{objectPath, interface, properties};

/// Shows a notice for once.
inline constexpr auto sendTestNotice = "sendTestNotice";

} // namespace velmora::wire::face::notifications

/// The fleet of the user's machines, beside the model under the same name; see velmora::EcosystemSync and
/// velmora::CloudKitManager.
namespace velmora::wire::face::fleet {

inline constexpr auto objectPath = "/app/velmora/EcosystemSync";
inline constexpr auto interface = "app.velmora.EcosystemSync";

inline constexpr auto isOn = "isOn";
inline constexpr auto acceptsCommands = "acceptsCommands";
inline constexpr auto place = "place";
inline constexpr auto deviceID = "deviceID";
inline constexpr auto deviceName = "deviceName";
inline constexpr auto isLeaving = "isLeaving";
inline constexpr auto isRecordLeft = "isRecordLeft";
inline constexpr auto isTesting = "isTesting";
inline constexpr auto lastSyncDate = "lastSyncDate";
inline constexpr auto lastListDate = "lastListDate";
inline constexpr auto fault = "fault";
inline constexpr auto testResult = "testResult";
inline constexpr auto devices = "devices";
inline constexpr std::array properties{
    Property{isOn, "b"},
    Property{acceptsCommands, "b", Access::write},
    Property{place, recordType}, ///< keys of `place_key`
    Property{deviceID, "s"},     ///< this machine's; empty while not known
    Property{deviceName, "s"},   ///< likewise
    Property{fault, "s"},        ///< one of recordFaultTexts: what keeps the records from being reached
    Property{isLeaving, "b"},    ///< it is off, and whether this machine's record is gone is not known yet
    Property{isRecordLeft, "b"}, ///< that record could not be removed at the last leave
    Property{isTesting, "b"},
    Property{testResult, "as"},   ///< one of recordFaultTexts, after a test
    Property{lastSyncDate, "ad"}, ///< of the last upload: seconds since 2001-01-01 UTC
    Property{lastListDate, "ad"}, ///< of the last answer to a listing, also of one that failed
    Property{devices, recordListType, Access::read, 0, 0, News::invalidated}, ///< see `device_key`
};
inline constexpr Face face{objectPath, interface, properties};

/// Of a place. The port is a number; a password is only ever sent, with what takes a place.
namespace place_key {
inline constexpr auto kind = "kind"; ///< one of recordPlaceKindTexts
inline constexpr auto host = "host";
inline constexpr auto port = "port";
inline constexpr auto database = "database";
inline constexpr auto user = "user";
inline constexpr auto trust = "trust"; ///< one of recordTrustTexts
inline constexpr auto passwordFile = "passwordFile";
inline constexpr auto password = "password";
} // namespace place_key

/// Of a device: those of its record (see velmora::device_record), as far as they are known, and its
/// identifier. Also of a command: identifier, limit and modes.
namespace device_key {
inline constexpr auto deviceID = "deviceID";
inline constexpr auto limit = "limit";                     ///< of a command: percent
inline constexpr auto isAutoProtectOn = "isAutoProtectOn"; ///< likewise
inline constexpr auto isStorageModeOn = "isStorageModeOn"; ///< likewise
} // namespace device_key

// Operations.
inline constexpr auto turnOn = "turnOn";
inline constexpr auto leave = "leave";
inline constexpr auto refresh = "refresh"; ///< lists the devices anew
// These take a record (see velmora::FleetCommand and recordPlaceOf). One that is not sound, or that nothing
// can be done about, is answered with org.freedesktop.DBus.Error.InvalidArgs and words for a developer.
inline constexpr auto use = "use";                   ///< a place; what is absent has its default
inline constexpr auto test = "test";                 ///< likewise
inline constexpr auto command = "command";           ///< a device and what it is to take over, all of it
inline constexpr auto removeDevice = "removeDevice"; ///< a device

} // namespace velmora::wire::face::fleet

/// The user's account, beside the model under the same name; see velmora::AppleAuthManager and
/// velmora::AccountSetup.
namespace velmora::wire::face::account {

inline constexpr auto objectPath = "/app/velmora/AppleAuthManager";
inline constexpr auto interface = "app.velmora.AppleAuthManager";

inline constexpr auto isSignedIn = "isSignedIn";
inline constexpr auto userDisplayName = "userDisplayName";
inline constexpr auto userEmail = "userEmail";
inline constexpr auto isLoading = "isLoading";
inline constexpr auto errorMessage = "errorMessage";
inline constexpr auto isUnread = "isUnread";
inline constexpr auto isUnconfirmed = "isUnconfirmed";
inline constexpr auto isChecking = "isChecking";
inline constexpr auto isRevoked = "isRevoked";
inline constexpr auto signedInSince = "signedInSince";
// Of the provider; also the keys of the record that `use` takes.
inline constexpr auto issuer = "issuer";
inline constexpr auto clientID = "clientID";
inline constexpr auto parameters = "parameters";
inline constexpr auto hasClientSecret = "hasClientSecret";
inline constexpr auto isKeepingSecret = "isKeepingSecret";
inline constexpr auto isSecretRefused = "isSecretRefused";
inline constexpr std::array properties{
    Property{isSignedIn, "b"},      Property{userDisplayName, "as"},
    Property{userEmail, "as"},      Property{isLoading, "b"}, ///< a sign-in is under way
    Property{errorMessage, "as"},                             ///< of the last sign-in, in the user's language
    Property{isUnread, "b"},       ///< the secret store has not said who is known from before
    Property{isUnconfirmed, "b"},  ///< known from before, and the provider has not said so yet
    Property{isChecking, "b"},     ///< secret store or provider is being asked now
    Property{isRevoked, "b"},      ///< the provider no longer honours the sign-in that was kept
    Property{signedInSince, "ad"}, ///< seconds since 2001-01-01 UTC
    Property{issuer, "s"},         ///< empty: no provider was chosen
    Property{clientID, "s"},        Property{parameters, "s"},
    Property{hasClientSecret, "b"}, ///< the secret store has one
    Property{isKeepingSecret, "b"}, ///< the one that was given; nothing has changed yet
    Property{isSecretRefused, "b"}, ///< the secret store did not take the one that was given last
};
inline constexpr Face face{objectPath, interface, properties};

/// Beside issuer, client and parameters in the record that `use` takes; only ever sent.
inline constexpr auto clientSecret = "clientSecret";
/// The key of what the desktop gives for a click, in the record that `signIn` takes.
inline constexpr auto presentationAnchor = "presentationAnchor";

// Operations. A call that is not sound is answered with org.freedesktop.DBus.Error.InvalidArgs and words for
// a developer.
inline constexpr auto signIn = "signIn"; ///< takes a record; not while one is under way
inline constexpr auto cancelSignIn = "cancelSignIn";
inline constexpr auto signOut = "signOut";
inline constexpr auto checkAgain = "checkAgain"; ///< with the provider, who is unconfirmed
/// Takes a record: the provider from now on; what is absent is empty, and without an issuer there is none.
inline constexpr auto use = "use";

} // namespace velmora::wire::face::account

/// What the tray icon says, beside the model, for desktops that show it in a way of their own.
namespace velmora::wire::face::status {

inline constexpr auto objectPath = "/app/velmora/Status";
inline constexpr auto interface = "app.velmora.Status";

inline constexpr auto sentence = "sentence"; ///< level and state in the user's language
inline constexpr auto icon = "icon";         ///< name in the icon theme
inline constexpr auto takesLimit =
    "takesLimit"; ///< limit, quick charge and Auto-Protect have an effect here and now
inline constexpr std::array properties{Property{sentence, "s"}, Property{icon, "s"},
                                       Property{takesLimit, "b"}};
inline constexpr Face face{objectPath, interface, properties};

} // namespace velmora::wire::face::status

/// What a person has set about one of the desktop's widgets; see velmora::WidgetSettings.
namespace velmora::wire::face::widget {

inline constexpr auto smallPath = "/app/velmora/widgets/small";
inline constexpr auto mediumPath = "/app/velmora/widgets/medium";
inline constexpr auto interface = "app.velmora.Widget";

inline constexpr std::array properties{
    Property{"isPinned", "b", Access::write}, ///< stays above all other windows
    Property{"isShownAtLogIn", "b", Access::write},
    Property{"place", "ai", Access::write, -32'768, 32'767}, ///< x and y, as windows are measured; or none
};
inline constexpr Face small{smallPath, interface, properties};
inline constexpr Face medium{mediumPath, interface, properties};

} // namespace velmora::wire::face::widget

/// What the windows' program serves on the session bus while it runs; its only caller is `velmora`.
namespace velmora::wire::windows {

inline constexpr auto serviceName = "app.velmora.Windows";
inline constexpr auto objectPath = "/app/velmora/Windows";
inline constexpr auto interface = "app.velmora.Windows";

/// Show(s window, s token): opens the window, or brings it to the front. With the token, which the desktop
/// gave for the click, a compositor lets it take the focus; empty where there is none.
inline constexpr auto show = "Show";
/// ShowInactive(s window): opens the window and leaves the focus where it is; one that is open stays as it
/// is.
inline constexpr auto showInactive = "ShowInactive";
/// Toggle(s window, i x, i y, s token): a click at that place of the screen (pixels of the root window) opens
/// the window there, or closes it.
inline constexpr auto toggle = "Toggle";

inline constexpr auto panel = "panel";
inline constexpr auto dashboard = "dashboard";
inline constexpr auto smallWidget = "widget-small";
inline constexpr auto mediumWidget = "widget-medium";

} // namespace velmora::wire::windows

namespace velmora::wire::face {

/// The window that an action opens; null for one that opens none.
constexpr const char* windowOf(std::string_view action)
{
    if (action == panelAction) return windows::panel;
    if (action == dashboardAction) return windows::dashboard;
    if (action == smallWidgetAction) return windows::smallWidget;
    return action == mediumWidgetAction ? windows::mediumWidget : nullptr;
}

} // namespace velmora::wire::face
