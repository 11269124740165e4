// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/Texts.h"

#include "client/QtText.h"
#include "texts/DashboardTexts.h"

#include <QVariantMap>

namespace velmora {

namespace {

QString text(panel::ThemeColor color)
{
    return velmora::text(panel::name(color));
}

ChargingState charging(const QString& raw)
{
    return chargingStateFromRawValue(raw.toStdString()).value_or(ChargingState::idle);
}

ThermalMonitorService::ThermalState thermal(const QString& raw)
{
    return ThermalMonitorService::thermalStateFromRawValue(raw.toStdString())
        .value_or(ThermalMonitorService::ThermalState::nominal);
}

} // namespace

QString Texts::filled(QString text, const QStringList& values) const
{
    for (qsizetype at = text.indexOf('%'); at >= 0; at = text.indexOf('%', at)) {
        const auto number = text.mid(at + 1, 1).toInt();
        const bool isPlaceholder = number > 0 && number <= values.size();
        if (isPlaceholder) text.replace(at, 2, values[number - 1]);
        at += isPlaceholder ? values[number - 1].size() : 1;
    }
    return text;
}

QString Texts::percentage(double percent) const
{
    return text(panel::percentageText(percent));
}

QString Texts::chargingWord(const QString& chargingState) const
{
    return text(panel::chargingWord(charging(chargingState)));
}

QString Texts::chargingColor(const QString& chargingState) const
{
    return text(panel::chargingColor(charging(chargingState)));
}

QString Texts::quickChargeTitle(bool isCharging) const
{
    return text(panel::quickChargeTitle(isCharging));
}

QString Texts::quickChargeSymbol(bool isCharging) const
{
    return text(panel::quickChargeSymbol(isCharging));
}

QString Texts::quickChargeTint(bool isCharging) const
{
    return text(panel::quickChargeTint(isCharging));
}

QString Texts::thermalText(const QString& thermalState) const
{
    return text(panel::thermalText(thermal(thermalState)));
}

QString Texts::thermalColor(const QString& thermalState) const
{
    return text(panel::thermalColor(thermal(thermalState)));
}

QVariantList Texts::thresholds() const
{
    QVariantList list;
    for (const auto& [label, limit] : panel::thresholds)
        list.append(QVariantMap{{"text", text(velmora::tr(label))}, {"limit", limit}});
    return list;
}

QString Texts::pageView(const QString& identifier) const
{
    return text(dashboard::view(identifier.toStdString()));
}

QVariantList Texts::pages() const
{
    QVariantList list;
    for (const auto& page : dashboard::pages)
        list.append(QVariantMap{{"section", text(velmora::tr(page.section))},
                                {"title", text(velmora::tr(page.title))},
                                {"icon", text(page.icon)},
                                {"color", text(page.color)},
                                {"identifier", text(page.identifier)}});
    return list;
}

QString Texts::pagePlaceholder() const
{
    return text(velmora::tr(dashboard::placeholder));
}

QString Texts::about() const
{
    return text(dashboard::aboutText());
}

} // namespace velmora
