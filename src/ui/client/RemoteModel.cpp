// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteModel.h"

#include "client/QtText.h"
#include "history/PredictionEngine.h"
#include "texts/PanelTexts.h"
#include "wire/ModelFace.h"

#include <QDateTime>
#include <utility>
#include <variant>

namespace velmora {

namespace {

/// As a model begins, settings aside; what is not named begins with nothing.
const std::pair<const char*, QVariant> initialValues[] = {
    {"percentage", 50.0},        {"chargingState", "Idle"},    {"thermalState", "Nominal"},
    {"powerSource", "Battery"},  {"timeToFull", qint64{-1}},   {"timeToEmpty", qint64{-1}},
    {"timeToLimit", qint64{-1}}, {"notifyOnLowBattery", true},
};

} // namespace

RemoteModel::RemoteModel(std::function<Date()> now, QObject* parent)
    : RemoteObject(wire::face::model, parent), now_(std::move(now)), degradation_(degradationOf(history_))
{
    for (const auto& [name, value] : initialValues) keep(name, value);
    for (const auto& setting : allSettings)
        keep(setting.modelProperty,
             std::visit([](auto field) { return QVariant(ChargingSettings{}.*field); }, setting.field));
    connect(&charger_, &RemoteObject::changed, this, &RemoteObject::changed);
}

Date RemoteModel::timeOfDay()
{
    return Date::fromUnix(static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000);
}

void RemoteModel::take(std::size_t row, const QVariant& value)
{
    const std::string_view name = table.at(row).name;
    if (name == "history") return takeHistory(value.value<QList<QVariantMap>>());
    RemoteObject::take(row, value);
}

void RemoteModel::selectDevice(const QString& id)
{
    set(QStringLiteral("selectedDeviceID"), id.isEmpty() ? QStringList{} : QStringList{id});
}

void RemoteModel::takeHistory(const QList<QVariantMap>& records)
{
    std::vector<HSHistorySnapshot> samples;
    for (const auto& record : records) samples.emplace_back(wired::archived(record), now());
    if (samples == history_) return;
    history_ = std::move(samples);
    degradation_ = degradationOf(history_);
    Q_EMIT historyChanged();
}

dashboard::Situation RemoteModel::situation() const
{
    return {.percentage = percentage(),
            .isCharging = chargingState() == QLatin1String("Charging"),
            .isOnBattery = powerSource() == QLatin1String("Battery"),
            .timeToFull = timeToFull(),
            .timeToEmpty = timeToEmpty(),
            .timeToLimit = timeToLimit(),
            .isAutoProtectOn = isAppleRecommendedModeEnabled(),
            .limit = customChargeLimit(),
            .charger = charger_.report(),
            .isSimulated = isSimulationModeEnabled()};
}

QString RemoteModel::said(std::string (*words)(const dashboard::Situation&)) const
{
    return text(words(situation()));
}

QString RemoteModel::startEffect(double limit, double hysteresis) const
{
    return text(dashboard::startEffect(situation(), limit, hysteresis));
}

QString RemoteModel::refusalText() const
{
    return text(dashboard::refusalText(charger_.refusal().toStdString()));
}

bool RemoteModel::hasLimiter() const
{
    const auto& report = charger_.report();
    return report && report->hasBattery && report->control != ChargerReport::Control::none;
}

bool RemoteModel::hasHysteresis() const
{
    return hasLimiter() && charger_.report()->control == ChargerReport::Control::thresholds;
}

QString RemoteModel::cycles() const
{
    const auto count = charger_.report().value_or(ChargerReport{}).cycleCount;
    return count < 0 ? QString() : QString::number(count);
}

QString RemoteModel::accessibleSummary() const
{
    using Thermal = ThermalMonitorService;
    const auto thermal = Thermal::thermalStateFromRawValue(thermalState().toStdString());
    return text(widget::accessibleSummary(situation(), thermal.value_or(Thermal::ThermalState::nominal)));
}

RemoteModel::Degradation RemoteModel::degradationOf(const std::vector<HSHistorySnapshot>& history)
{
    const auto rate = PredictionEngine::degradationRatePerMonth(history);
    const auto color = panel::name(panel::degradationColor(rate));
    return {text(panel::degradationText(rate)), text(panel::degradationAccessibleName(rate)), text(color)};
}

} // namespace velmora
