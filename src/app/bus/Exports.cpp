// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/Exports.h"

namespace velmora::exports {

namespace {

KeyedArchive::Value valueOf(const std::optional<ChargerReport>& report, std::string_view property)
{
    KeyedArchive archive = report.value_or(ChargerReport{}).archived();
    archive.encode(wire::face::charger::isKnown, report.has_value());
    const auto* value = archive.find(property);
    return value ? *value : KeyedArchive::Value{};
}

} // namespace

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
