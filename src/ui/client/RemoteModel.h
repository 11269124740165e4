// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteCharger.h"

#include <QString>
#include <functional>
#include <string>
#include <vector>

#include "texts/DashboardTexts.h"
#include "texts/NoticeTexts.h"
#include "texts/WidgetTexts.h"
#include "wire/VelmoraProtocol.h"

namespace velmora {

/// The resident application's model as the views see it: the properties of wire::face under their own names,
/// what the daemon tells of the charger, and what both say in words. Until the application has told, it shows
/// the values that a model begins with.
class RemoteModel : public velmora::RemoteObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("There is one, and windows are given it.")
    static constexpr const auto& table = wire::face::properties;
    VELMORA_MIRRORED(double, percentage)
    VELMORA_MIRRORED(QString, chargingState)
    VELMORA_MIRRORED(bool, isAppleRecommendedModeEnabled)
    VELMORA_MIRRORED(bool, isTemporaryOverrideEnabled)
    VELMORA_MIRRORED(bool, isLimitReached)
    VELMORA_MIRRORED(QString, thermalState)
    VELMORA_MIRRORED(QString, powerSource)
    VELMORA_MIRRORED(qint64, timeToFull)
    VELMORA_MIRRORED(qint64, timeToEmpty)
    VELMORA_MIRRORED(qint64, timeToLimit)
    VELMORA_MIRRORED(bool, isSimulationModeEnabled)
    VELMORA_MIRRORED(double, customChargeLimit)
    VELMORA_MIRRORED(double, customHysteresis)
    VELMORA_MIRRORED(bool, isStorageModeEnabled)
    VELMORA_MIRRORED(bool, notifyOnLimit)
    VELMORA_MIRRORED(bool, notifyOnHeat)
    VELMORA_MIRRORED(bool, notifyOnCycle)
    VELMORA_MIRRORED(bool, notifyOnLowBattery)
    VELMORA_MIRRORED(double, lowBatteryLimit)
    VELMORA_MIRRORED(bool, notifyOnPowerChange)
    Q_PROPERTY(QString selectedDeviceID READ selectedDeviceID NOTIFY changed) ///< empty: none
    // What the values say; see dashboard.
    Q_PROPERTY(QString statusLine READ statusLine NOTIFY changed)
    Q_PROPERTY(QString limiterText READ limiterText NOTIFY changed)
    Q_PROPERTY(QString limitCaption READ limitCaption NOTIFY changed)
    Q_PROPERTY(QString limitEffect READ limitEffect NOTIFY changed)
    Q_PROPERTY(QString refusalText READ refusalText NOTIFY changed) ///< empty: nothing was refused
    Q_PROPERTY(bool hasLimiter READ hasLimiter NOTIFY changed)
    Q_PROPERTY(bool hasHysteresis READ hasHysteresis NOTIFY changed)
    Q_PROPERTY(bool pausesForHeat READ pausesForHeat NOTIFY changed)
    Q_PROPERTY(QString heatCaption READ heatCaption NOTIFY changed)
    Q_PROPERTY(bool countsCycles READ countsCycles NOTIFY changed)
    Q_PROPERTY(QString cycleCaption READ cycleCaption NOTIFY changed)
    Q_PROPERTY(QString cycles READ cycles NOTIFY changed) ///< empty: the laptop does not count them
    // What the desktop's widgets say; see widget.
    Q_PROPERTY(bool isWatched READ isWatched NOTIFY changed)
    Q_PROPERTY(QString levelText READ levelText NOTIFY changed)
    Q_PROPERTY(QString stateText READ stateText NOTIFY changed)
    Q_PROPERTY(QString statusText READ statusText NOTIFY changed)
    Q_PROPERTY(QString healthText READ healthText NOTIFY changed)
    Q_PROPERTY(QString accessibleName READ accessibleName NOTIFY changed)
    Q_PROPERTY(QString accessibleSummary READ accessibleSummary NOTIFY changed)
    // What the history says; see panel. The colour is a name of `Theme.color`.
    Q_PROPERTY(QString degradationText READ degradationText NOTIFY changed)
    Q_PROPERTY(QString degradationAccessibleName READ degradationAccessibleName NOTIFY changed)
    Q_PROPERTY(QString degradationColor READ degradationColor NOTIFY changed)
public:
    /// `now`: what time it is for those who look at the history.
    explicit RemoteModel(std::function<Date()> now = &RemoteModel::timeOfDay, QObject* parent = nullptr);

    static Date timeOfDay();

    RemoteCharger& charger() { return charger_; }

    /// When charging would begin again with these two. Depends on what `changed` tells of.
    Q_INVOKABLE QString startEffect(double limit, double hysteresis) const;
    Q_INVOKABLE void selectDevice(const QString& id); ///< empty: none
    Q_INVOKABLE void toggleTemporaryOverride() { Q_EMIT operationWanted("toggleTemporaryOverride"); }
    /// Asks for samples that have come since.
    Q_INVOKABLE void fetchHistory() { Q_EMIT operationWanted("fetchHistory"); }

    QString selectedDeviceID() const { return value("selectedDeviceID").toStringList().value(0); }

    QString statusLine() const { return said(dashboard::statusLine); }
    QString limiterText() const { return said(dashboard::limiterText); }
    QString limitCaption() const { return said(charger::limitCaption); }
    QString limitEffect() const { return said(dashboard::limitEffect); }
    QString refusalText() const;
    /// Software can limit charging here, and the daemon is there to do it.
    bool hasLimiter() const;
    /// Likewise when charging begins again.
    bool hasHysteresis() const;
    bool pausesForHeat() const { return notices::pausesForHeat(situation()); }
    QString heatCaption() const { return said(notices::heatCaption); }
    bool countsCycles() const { return notices::countsCycles(situation()); }
    QString cycleCaption() const { return said(notices::cycleCaption); }
    QString cycles() const;
    bool isWatched() const { return dashboard::isWatched(situation()); }
    QString firstSampleText() const { return said(dashboard::firstSampleText); }
    QString levelText() const { return said(widget::levelText); }
    QString stateText() const { return said(widget::stateText); }
    QString statusText() const { return said(widget::statusText); }
    QString healthText() const { return said(widget::healthText); }
    QString accessibleName() const { return said(widget::accessibleName); }
    QString accessibleSummary() const;
    QString degradationText() const { return degradation_.text; }
    QString degradationAccessibleName() const { return degradation_.accessibleName; }
    QString degradationColor() const { return degradation_.color; }

    /// Not for QML: a thousand samples are worked on here.
    const std::vector<HSHistorySnapshot>& history() const { return history_; }
    Date now() const { return now_(); }

Q_SIGNALS:
    void historyChanged();

protected:
    void take(std::size_t row, const QVariant& value) override;

private:
    void takeHistory(const QList<QVariantMap>& records);

    dashboard::Situation situation() const;
    QString said(std::string (*words)(const dashboard::Situation&)) const;
    struct Degradation {
        QString text;
        QString accessibleName;
        QString color;
    };
    static Degradation degradationOf(const std::vector<HSHistorySnapshot>& history);

    std::function<Date()> now_;
    RemoteCharger charger_;
    std::vector<HSHistorySnapshot> history_;
    Degradation degradation_;
};

} // namespace velmora
