// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/Exports.h"

#include "base/Wipe.h"
#include "fleet/FleetArchive.h"
#include "wire/TypedValue.h"

#include <stdexcept>

namespace velmora::exports {

namespace {

KeyedArchive::Value valueOf(const std::optional<ChargerReport>& report, std::string_view property)
{
    KeyedArchive archive = report.value_or(ChargerReport{}).archived();
    archive.encode(wire::face::charger::isKnown, report.has_value());
    const auto* value = archive.find(property);
    return value ? *value : KeyedArchive::Value{};
}

using PlaceOperation = void (EcosystemSync::*)(const RecordPlace&, const std::optional<std::string>&);

/// With the password in `record`; without one, or an empty one, that which is kept.
void withPlace(EcosystemSync& sync, PlaceOperation operation, const KeyedArchive& record)
{
    const auto place = recordPlaceOf(record);
    if (!EcosystemSync::isComplete(place))
        throw std::invalid_argument(
            "a server takes host (no socket), database and user, of printable ASCII characters");
    auto password = record.decodeText(wire::face::fleet::place_key::password, "");
    if (password.empty()) return (sync.*operation)(place, std::nullopt);
    std::optional given(password);
    (sync.*operation)(place, given);
    wipe(*given);
    wipe(password);
}

void command(EcosystemSync& sync, const KeyedArchive& record)
{
    const auto wanted = fleetCommandOf(record);
    if (!sync.command(wanted.deviceID, wanted.limit, wanted.isAutoProtectOn, wanted.isStorageModeOn))
        throw std::invalid_argument("a command goes to a listed machine that takes commands, with a limit of "
                                    "50 to 100, or the one in force there");
}

void removeDevice(EcosystemSync& sync, const KeyedArchive& record)
{
    if (!sync.removeDevice(deviceIDOf(record)))
        throw std::invalid_argument("only another machine that has been silent for ten minutes is removed");
}

void addOperations(ExportedObject& object, EcosystemSync& sync, const std::function<void()>& refresh)
{
    namespace wired = wire::face::fleet;
    const auto add = [&](const char* name, auto operate) {
        object.addOperation(name, [&sync, operate](const KeyedArchive& record) { operate(sync, record); });
    };
    object.addOperation(wired::turnOn, [&sync] { sync.turnOn(); });
    object.addOperation(wired::leave, [&sync] { sync.leave(); });
    object.addOperation(wired::refresh, refresh);
    add(wired::use, [](auto& to, const auto& record) { withPlace(to, &EcosystemSync::use, record); });
    add(wired::test, [](auto& to, const auto& record) { withPlace(to, &EcosystemSync::test, record); });
    add(wired::command, command);
    add(wired::removeDevice, removeDevice);
}

/// A property of the manager that has its initial value until there is a manager.
template <typename T>
void deriveLate(ExportedObject& object, AccountSetup& account, const char* name,
                Observable<T> AppleAuthManager::*property)
{
    object.derive(name, [&account, property] {
        const auto* manager = account.manager();
        return manager ? (manager->*property).get() : T{};
    });
}

void watch(ExportedObject& object, AppleAuthManager& manager)
{
    for (auto* truth : {&manager.isSignedIn, &manager.isLoading, &manager.isUnconfirmed, &manager.isChecking,
                        &manager.isRevoked, &manager.isUnread})
        object.watch(*truth);
    for (auto* text : {&manager.userDisplayName, &manager.userEmail, &manager.errorMessage})
        object.watch(*text);
    object.watch(manager.signedInSince);
    object.derivedChanged();
}

void signIn(AccountSetup& account, const KeyedArchive& record)
{
    const auto anchor = wire::typed<std::string>(record, wire::face::account::presentationAnchor, "");
    if (!account.madeManager().signIn(anchor)) throw std::invalid_argument("a sign-in is under way");
}

void useProvider(AccountSetup& account, const KeyedArchive& record)
{
    namespace wired = wire::face::account;
    if (account.isKeepingSecret.get())
        throw std::invalid_argument("an earlier client's secret is being kept");
    const IdentitySource source{.issuer = wire::typed<std::string>(record, wired::issuer, ""),
                                .clientID = wire::typed<std::string>(record, wired::clientID, ""),
                                .parameters = wire::typed<std::string>(record, wired::parameters, "")};
    auto secret = wire::typed<std::string>(record, wired::clientSecret, "");
    std::optional<std::string> given;
    if (!secret.empty()) given = secret;
    const bool isDone = account.use(source, given);
    wipe(secret);
    if (given) wipe(*given);
    if (!isDone)
        throw std::invalid_argument(
            "a provider takes an issuer (https, or http on this machine), a client and "
            "parameters as NAME=VALUE&NAME=VALUE, of printable ASCII characters");
}

} // namespace

void serve(ExportedObject& object, AccountSetup& account)
{
    namespace wired = wire::face::account;
    using Manager = AppleAuthManager;
    deriveLate(object, account, wired::isSignedIn, &Manager::isSignedIn);
    deriveLate(object, account, wired::userDisplayName, &Manager::userDisplayName);
    deriveLate(object, account, wired::userEmail, &Manager::userEmail);
    deriveLate(object, account, wired::isLoading, &Manager::isLoading);
    deriveLate(object, account, wired::errorMessage, &Manager::errorMessage);
    deriveLate(object, account, wired::isUnread, &Manager::isUnread);
    deriveLate(object, account, wired::isUnconfirmed, &Manager::isUnconfirmed);
    deriveLate(object, account, wired::isChecking, &Manager::isChecking);
    deriveLate(object, account, wired::isRevoked, &Manager::isRevoked);
    deriveLate(object, account, wired::signedInSince, &Manager::signedInSince);
    const auto derive = [&](const char* name, std::string IdentitySource::*part) {
        object.derive(name, [&account, part] { return account.source.get().*part; });
    };
    derive(wired::issuer, &IdentitySource::issuer);
    derive(wired::clientID, &IdentitySource::clientID);
    derive(wired::parameters, &IdentitySource::parameters);
    object.watch(account.source);
    object.bind(wired::hasClientSecret, account.hasClientSecret);
    object.bind(wired::isKeepingSecret, account.isKeepingSecret);
    object.bind(wired::isSecretRefused, account.isSecretRefused);
    if (account.manager())
        watch(object, *account.manager());
    else
        account.onManager = [&object, &account] { watch(object, *account.manager()); };
    object.addOperation(wired::signIn, [&account](const KeyedArchive& record) { signIn(account, record); });
    object.addOperation(wired::cancelSignIn, [&account] { account.madeManager().cancelSignIn(); });
    object.addOperation(wired::signOut, [&account] { account.madeManager().signOut(); });
    object.addOperation(wired::checkAgain, [&account] { account.madeManager().checkAgain(); });
    object.addOperation(wired::use, [&account](const KeyedArchive& record) { useProvider(account, record); });
    object.serve();
}

void serve(ExportedObject& object, EcosystemSync& sync, CloudKitManager& manager,
           const std::function<void()>& refresh)
{
    namespace wired = wire::face::fleet;
    using Value = KeyedArchive::Value;
    object.bind(wired::isOn, sync.isOn);
    object.bind(wired::acceptsCommands, sync.acceptsCommands);
    object.bind(wired::place, sync.place);
    object.bind(wired::deviceID, sync.deviceID);
    object.derive(wired::deviceName, [&manager] { return Value(manager.deviceName()); });
    object.derive(wired::fault, [&sync, &manager] {
        const auto own = sync.fault.get();
        return Value(faultText(own == RecordFault::none ? manager.lastFault.get() : own));
    });
    object.watch(sync.fault);
    object.watch(manager.lastFault);
    object.bind(wired::isLeaving, sync.isLeaving);
    object.bind(wired::isRecordLeft, sync.isRecordLeft);
    object.bind(wired::isTesting, sync.isTesting);
    object.bind(wired::testResult, sync.testResult);
    object.bind(wired::lastSyncDate, manager.lastSyncDate);
    object.bind(wired::lastListDate, manager.lastListDate);
    object.bind(wired::devices, manager.devices);
    addOperations(object, sync, refresh);
    object.serve();
}

void serve(ExportedObject& object, InstallationManager& manager, std::function<bool()> isDaemonPresent)
{
    object.derive("isDaemonPresent", std::move(isDaemonPresent));
    object.bind("isInstallationCompleted", manager.isInstallationCompleted);
    object.bind("isInstalling", manager.isInstalling);
    object.bind("installationProgress", manager.installationProgress);
    object.bind("installationError", manager.installationError);
    object.addOperation(wire::face::installation::install, [&manager] { manager.begin(); });
    object.serve();
}

void serve(ExportedObject& object, VersionNotice& notice)
{
    namespace wired = wire::face::notice;
    object.bind("hasSeenMacOS264Banner", notice.hasSeenMacOS264Banner);
    object.bind(wired::showMacOS264Banner, notice.showMacOS264Banner);
    object.addOperation(wired::appeared, [&notice] { notice.appeared(); });
    object.addOperation(wired::dismissed, [&notice] { notice.dismissed(); });
    object.serve();
}

void serve(ExportedObject& object, WidgetSettings& widget)
{
    object.bind("isPinned", widget.isPinned);
    object.bind("isShownAtLogIn", widget.isShownAtLogIn);
    object.bind("place", widget.place);
    object.serve();
}

void serve(ExportedObject& object, CalendarContextManager& calendar, CalendarConsent& consent,
           TravelCharge& travel)
{
    namespace wired = wire::face::calendar;
    object.bind(wired::isConsentGiven, consent.isGiven);
    object.bind(wired::isTravelChargeOn, travel.isEnabled);
    object.bind("calendarAccessGranted", calendar.calendarAccessGranted);
    object.bind("isTravelDayDetected", calendar.isTravelDayDetected);
    object.bind("isLastScanWhole", calendar.isLastScanWhole);
    object.bind("detectedEventTitle", calendar.detectedEventTitle);
    object.bind(wired::travelChargeStage, travel.stage);
    object.bind(wired::travelChargeBegins, travel.begins);
    object.addOperation(wired::checkNow, [&consent] { consent.lookNow(); });
    object.serve();
}

void serve(ExportedObject& object, NotificationStatus& status, DeliveredNotices& delivered)
{
    namespace wired = wire::face::notifications;
    object.bind("server", status.server);
    object.bind("isServerStartable", status.isServerStartable);
    object.bind("isInhibited", status.isInhibited);
    object.bind(wired::testResult, status.testResult);
    object.bind("lastLimitNotice", delivered.lastLimitNotice);
    object.bind("lastPowerNotice", delivered.lastPowerNotice);
    object.bind("lastHeatNotice", delivered.lastHeatNotice);
    object.bind("lastCycleNotice", delivered.lastCycleNotice);
    object.bind("lastLowBatteryNotice", delivered.lastLowBatteryNotice);
    object.bind("lastTravelNotice", delivered.lastTravelNotice);
    object.addOperation(wired::sendTestNotice, [&status] { status.sendTestNotice(); });
    object.serve();
}

void serve(ExportedObject& object, const ChargerSource& report, const std::function<std::string()>& refusal)
{
    namespace wired = wire::face::charger;
    object.derive(wired::refusal, [refusal] { return KeyedArchive::Value(refusal()); });
    for (const auto& property : wired::properties)
        if (property.name != std::string_view(wired::refusal))
            object.derive(property.name, [report, name = property.name] { return valueOf(report(), name); });
    object.serve();
}

} // namespace velmora::exports
