// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteModel.h"

#include "base/Saturate.h"
#include "history/PredictionEngine.h"
#include "texts/PanelTexts.h"
#include "wire/ModelFace.h"

#include <QDBusArgument>
#include <QDateTime>
#include <QLocale>
#include <algorithm>
#include <cmath>
#include <optional>
#include <variant>

namespace velmora {

namespace {

template <typename T>
std::optional<T> decoded(const QVariant& value)
{
    if (value.metaType() != QMetaType::fromType<T>()) return std::nullopt;
    return value.value<T>();
}

template <>
std::optional<double> decoded(const QVariant& value)
{
    const double number = value.toDouble();
    if (value.metaType() != QMetaType::fromType<double>() || !std::isfinite(number)) return std::nullopt;
    return number;
}

/// As a bus hands it over, or as a list of maps.
std::optional<QList<QVariantMap>> decodedRecords(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<QList<QVariantMap>>())
        return value.value<QList<QVariantMap>>();
    const auto argument = decoded<QDBusArgument>(value);
    if (!argument || argument->currentSignature() != QLatin1String(wire::recordListType)) return std::nullopt;
    return qdbus_cast<QList<QVariantMap>>(*argument);
}

/// An optional is a list of at most one.
std::optional<QList<double>> decodedNumbers(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<QList<double>>()) return value.value<QList<double>>();
    const auto argument = decoded<QDBusArgument>(value);
    if (!argument || argument->currentSignature() != QLatin1String("ad")) return std::nullopt;
    return qdbus_cast<QList<double>>(*argument);
}

KeyedArchive archive(const QVariantMap& record)
{
    KeyedArchive archive;
    for (auto entry = record.begin(); entry != record.end(); ++entry) {
        const auto key = entry.key().toStdString();
        const auto& value = entry.value();
        if (const auto flag = decoded<bool>(value))
            archive.encode(key, *flag);
        else if (const auto number = decoded<double>(value))
            archive.encode(key, *number);
        else if (const auto integer = decoded<qint64>(value))
            archive.encode(key, std::int64_t{*integer});
        else if (const auto text = decoded<QString>(value))
            archive.encode(key, text->toStdString());
    }
    return archive;
}

SharedBatteryState device(const KeyedArchive& archive)
{
    return {.percentage = std::clamp(archive.decodeDouble("percentage", 0), 0.0, 100.0),
            .isCharging = archive.decodeBool("isCharging", false),
            .powerSource = archive.decodeText("powerSource", "Unknown"),
            .timeToFull = archive.decodeInteger("timeToFull", -1),
            .timeToEmpty = archive.decodeInteger("timeToEmpty", -1),
            .deviceID = archive.decodeText("deviceID", ""),
            .deviceName = archive.decodeText("deviceName", "")};
}

QVariantMap fleetRow(const SharedBatteryState& device)
{
    return {{"id", QString::fromStdString(device.id())},
            {"name", QString::fromStdString(dashboard::deviceName(device)).simplified()},
            {"status", QString::fromStdString(dashboard::deviceStatus(device))},
            {"battery", QString::fromStdString(panel::percentageText(device.percentage))}};
}

} // namespace

struct RemoteModel::Field {
    const char* name;
    std::variant<bool Values::*, double Values::*, qint64 Values::*, QString Values::*> member;

    /// Whether `value` was one for it.
    bool assign(Values& values, const QVariant& value) const
    {
        return std::visit(
            [&](auto place) {
                using T = std::remove_reference_t<decltype(values.*place)>;
                const auto taken = decoded<T>(value);
                if (taken) values.*place = *taken;
                return taken.has_value();
            },
            member);
    }
};

const std::vector<RemoteModel::Field>& RemoteModel::fields()
{
    static const std::vector<Field> table{
        {"percentage", &Values::percentage},
        {"chargingState", &Values::chargingState},
        {"isAppleRecommendedModeEnabled", &Values::isAppleRecommendedModeEnabled},
        {"isTemporaryOverrideEnabled", &Values::isTemporaryOverrideEnabled},
        {"isLimitReached", &Values::isLimitReached},
        {"thermalState", &Values::thermalState},
        {"powerSource", &Values::powerSource},
        {"timeToFull", &Values::timeToFull},
        {"timeToEmpty", &Values::timeToEmpty},
        {"timeToLimit", &Values::timeToLimit},
        {"isSimulationModeEnabled", &Values::isSimulationModeEnabled},
        {"customChargeLimit", &Values::customChargeLimit},
        {"customHysteresis", &Values::customHysteresis},
        {"isStorageModeEnabled", &Values::isStorageModeEnabled},
        {"notifyOnLimit", &Values::notifyOnLimit},
        {"notifyOnHeat", &Values::notifyOnHeat},
        {"notifyOnCycle", &Values::notifyOnCycle},
        {"notifyOnLowBattery", &Values::notifyOnLowBattery},
        {"lowBatteryLimit", &Values::lowBatteryLimit},
        {"notifyOnPowerChange", &Values::notifyOnPowerChange},
    };
    return table;
}

RemoteModel::RemoteModel(std::function<Date()> now, QObject* parent)
    : QObject(parent),
      now_(std::move(now)),
      degradation_(degradationOf(history_)),
      complaints_(log_, "RemoteModel")
{
}

Date RemoteModel::timeOfDay()
{
    return Date::fromUnix(static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000);
}

void RemoteModel::apply(const QVariantMap& values)
{
    for (const auto& field : fields()) {
        const auto value = values.constFind(QLatin1String(field.name));
        if (value != values.constEnd() && !field.assign(values_, *value)) refuse(value.key());
    }
    const std::pair<const char*, bool (RemoteModel::*)(const QVariant&)> lists[] = {
        {"history", &RemoteModel::applyHistory},
        {"fleetStates", &RemoteModel::applyFleet},
        {"selectedDeviceID", &RemoteModel::applySelection},
        {"lastCloudSyncDate", &RemoteModel::applyLastSync},
    };
    for (const auto& [name, take] : lists) {
        const auto value = values.constFind(QLatin1String(name));
        if (value != values.constEnd() && !(this->*take)(*value)) refuse(value.key());
    }
    Q_EMIT changed();
}

void RemoteModel::applyCharger(const QVariantMap& values)
{
    charger_.update(archive(values));
    Q_EMIT changed();
}

void RemoteModel::selectDevice(const QString& id)
{
    set(QStringLiteral("selectedDeviceID"), id.isEmpty() ? QStringList{} : QStringList{id});
}

bool RemoteModel::applyHistory(const QVariant& value)
{
    const auto records = decodedRecords(value);
    if (!records) return false;
    std::vector<HSHistorySnapshot> samples;
    for (const auto& record : *records) samples.emplace_back(archive(record), now());
    if (samples == history_) return true;
    history_ = std::move(samples);
    degradation_ = degradationOf(history_);
    Q_EMIT historyChanged();
    return true;
}

bool RemoteModel::applyFleet(const QVariant& value)
{
    const auto records = decodedRecords(value);
    if (!records) return false;
    QVariantList rows;
    for (const auto& record : *records) rows.append(fleetRow(device(archive(record))));
    if (std::exchange(fleet_, rows) != rows) Q_EMIT fleetChanged();
    return true;
}

bool RemoteModel::applySelection(const QVariant& value)
{
    const auto ids = decoded<QStringList>(value);
    if (ids) selectedDevice_ = ids->value(0);
    return ids.has_value();
}

bool RemoteModel::applyLastSync(const QVariant& value)
{
    const auto dates = decodedNumbers(value);
    if (!dates || !std::ranges::all_of(*dates, [](double date) { return std::isfinite(date); })) return false;
    lastSync_ = dates->isEmpty() ? std::nullopt : std::optional(Date{dates->first()});
    return true;
}

QString RemoteModel::lastSync() const
{
    if (!lastSync_) return {};
    const auto moment = QDateTime::fromSecsSinceEpoch(truncated(lastSync_->unixSeconds()));
    return QLocale::c().toString(moment, QStringLiteral("d MMM yyyy, HH:mm"));
}

dashboard::Situation RemoteModel::situation() const
{
    const bool isTold = charger_.decodeBool(wire::face::charger::isKnown, false);
    return {.percentage = values_.percentage,
            .isCharging = values_.chargingState == QLatin1String("Charging"),
            .isOnBattery = values_.powerSource == QLatin1String("Battery"),
            .timeToFull = values_.timeToFull,
            .timeToEmpty = values_.timeToEmpty,
            .timeToLimit = values_.timeToLimit,
            .isAutoProtectOn = values_.isAppleRecommendedModeEnabled,
            .limit = values_.customChargeLimit,
            .charger = isTold ? std::optional(ChargerReport::unarchived(charger_)) : std::nullopt,
            .isSimulated = values_.isSimulationModeEnabled};
}

QString RemoteModel::said(std::string (*words)(const dashboard::Situation&)) const
{
    return QString::fromStdString(words(situation()));
}

QString RemoteModel::startEffect(double limit, double hysteresis) const
{
    return QString::fromStdString(dashboard::startEffect(situation(), limit, hysteresis));
}

QString RemoteModel::cycles() const
{
    const auto count = ChargerReport::unarchived(charger_).cycleCount;
    return count < 0 ? QString() : QString::number(count);
}

QString RemoteModel::accessibleSummary() const
{
    using Thermal = ThermalMonitorService;
    const auto thermal = Thermal::thermalStateFromRawValue(values_.thermalState.toStdString());
    return QString::fromStdString(
        widget::accessibleSummary(situation(), thermal.value_or(Thermal::ThermalState::nominal)));
}

void RemoteModel::refuse(const QString& property)
{
    const auto name = property.toStdString();
    complaints_.raise(name, "Ignored an invalid value of " + name + "; the previous one stays.");
}

RemoteModel::Degradation RemoteModel::degradationOf(const std::vector<HSHistorySnapshot>& history)
{
    const auto rate = PredictionEngine::degradationRatePerMonth(history);
    const auto color = panel::name(panel::degradationColor(rate));
    return {QString::fromStdString(panel::degradationText(rate)),
            QString::fromStdString(panel::degradationAccessibleName(rate)),
            QString::fromUtf8(color.data(), static_cast<qsizetype>(color.size()))};
}

} // namespace velmora
