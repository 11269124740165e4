// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteFleet.h"

#include "client/QtText.h"
#include "client/RemoteModel.h"
#include "fleet/FleetArchive.h"
#include "texts/FleetTexts.h"
#include "texts/PanelTexts.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace velmora {

namespace wiring = wire::face::fleet;

namespace {

/// As a form fills it in, where a number is QML's; a port that is none is 0.
RecordPlace placeOf(QVariantMap form)
{
    const auto port = form.take(QString::fromLatin1(wiring::place_key::port)).toLongLong();
    RecordPlace place{.kind = RecordPlace::Kind::server};
    try {
        place = recordPlaceOf(wired::archived(form));
    } catch (const std::invalid_argument&) { // it has no host then, which the form says
    }
    place.port = port > 0 && port <= std::numeric_limits<quint16>::max() ? quint16(port) : 0;
    return place;
}

} // namespace

RemoteFleet::RemoteFleet(QObject* parent) : RemoteObject(wiring::face, parent), now_(&RemoteModel::timeOfDay)
{
}

void RemoteFleet::take(std::size_t row, const QVariant& value)
{
    RemoteObject::take(row, value);
    const std::string_view name = table.at(row).name;
    if (name == wiring::devices) {
        reports_.clear();
        for (const auto& record : value.value<QList<QVariantMap>>())
            reports_.push_back(deviceReportOf(wired::archived(record)));
    }
    if (name == wiring::devices || name == wiring::deviceID) show();
}

FleetList::Row RemoteFleet::rowOf(const DeviceReport& report) const
{
    const auto now = now_();
    const auto id = text(report.state.id());
    const bool isCharging = report.state.isCharging && !report.isSilent(now);
    return {.identifier = id,
            .name = text(fleet::nameOf(report, id == deviceID())),
            .status = text(fleet::statusText(report, now)),
            .battery = text(panel::percentageText(std::clamp(report.state.percentage, 0.0, 100.0))),
            .symbol = isCharging ? QStringLiteral("bolt.fill") : QStringLiteral("bolt.slash.fill"),
            .tint = text(panel::name(
                panel::chargingColor(isCharging ? ChargingState::charging : ChargingState::idle)))};
}

void RemoteFleet::show()
{
    QList<FleetList::Row> rows;
    for (const auto& report : reports_) rows.append(rowOf(report));
    list_.assign(rows);
    ++listings_;
    Q_EMIT listed();
}

void RemoteFleet::refresh()
{
    show();
    ask(wiring::refresh);
}

QVariantMap RemoteFleet::device(const QString& identifier) const
{
    const auto found = std::ranges::find_if(
        reports_, [id = identifier.toStdString()](const auto& one) { return one.state.id() == id; });
    if (identifier.isEmpty() || found == reports_.end()) return {};
    const auto now = now_();
    const auto command = fleet::suggested(*found, now);
    const auto given = found->state.commandTimestamp;
    constexpr auto lowest = DeviceReport::lowestLimit;
    const auto inForce = found->inForce ? found->inForce->limit : lowest;
    return {{"name", text(fleet::nameOf(*found))},
            {"isThisMachine", identifier == deviceID()},
            {"isRemovable", identifier != deviceID() && found->isSilent(now)},
            {"inForce", text(fleet::inForceText(*found))},
            {"obstacle", text(fleet::obstacleText(*found))},
            {"limit", command.limit},
            {"lowLimitText", text(fleet::lowLimitText(*found))},
            {"lowestLimit", found->takesLimit(inForce) ? std::min(inForce, lowest) : lowest},
            {"isAutoProtectOn", command.isAutoProtectOn},
            {"isStorageModeOn", command.isStorageModeOn},
            {"commandDate", given ? given->sinceReference : 0.0},
            {"commandText", text(fleet::commandText(*found, now))}};
}

void RemoteFleet::ask(const char* operation, const KeyedArchive& record)
{
    Q_EMIT recordOperationWanted(QString::fromLatin1(operation), wired::mapped(record));
}

void RemoteFleet::command(const QString& identifier, double limit, bool isAutoProtectOn, bool isStorageModeOn)
{
    ask(wiring::command, archived(FleetCommand{.deviceID = identifier.toStdString(),
                                               .limit = limit,
                                               .isAutoProtectOn = isAutoProtectOn,
                                               .isStorageModeOn = isStorageModeOn}));
}

void RemoteFleet::remove(const QString& identifier)
{
    KeyedArchive record;
    record.encode(wiring::device_key::deviceID, identifier.toStdString());
    ask(wiring::removeDevice, record);
}

void RemoteFleet::askWithPlace(const char* operation, const QVariantMap& place, const QString& password)
{
    auto record = archived(placeOf(place));
    if (!password.isEmpty()) record.encode(wiring::place_key::password, password.toStdString());
    ask(operation, record);
    record.wipe();
}

void RemoteFleet::use(const QVariantMap& place, const QString& password)
{
    askWithPlace(wiring::use, place, password);
}

void RemoteFleet::test(const QVariantMap& place, const QString& password)
{
    askWithPlace(wiring::test, place, password);
    keep(wiring::isTesting, true); // what an earlier test has found is not shown for this one's
    Q_EMIT changed();
}

QVariantMap RemoteFleet::place() const
{
    return wired::mapped(archived(recordPlace()));
}

RecordPlace RemoteFleet::recordPlace() const
{
    const auto told = value(wiring::place).toMap();
    return told.isEmpty() ? RecordPlace{} : placeOf(told);
}

QString RemoteFleet::placeText() const
{
    return text(fleet::placeText(recordPlace()));
}

QString RemoteFleet::problemText() const
{
    const auto fault = value(wiring::fault).toString().toStdString();
    return isOn() ? text(fleet::problemText(faultOf(fault), recordPlace())) : QString();
}

QString RemoteFleet::leftText() const
{
    return !isOn() && value(wiring::isRecordLeft).toBool() ? text(fleet::recordLeftText()) : QString();
}

QString RemoteFleet::listEndText() const
{
    return text(fleet::listEndText(reports_.size()));
}

QString RemoteFleet::missingText(const QVariantMap& place) const
{
    return text(fleet::missingText(placeOf(place)));
}

QString RemoteFleet::testText(const QVariantMap& place) const
{
    const auto result = value(wiring::testResult).toStringList();
    if (result.isEmpty()) return {};
    return text(fleet::testText(faultOf(result.first().toStdString()), placeOf(place)));
}

QString RemoteFleet::lastSync() const
{
    return moment(wiring::lastSyncDate);
}

} // namespace velmora
