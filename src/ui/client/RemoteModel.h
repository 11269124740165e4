// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/QtLog.h"
#include "platform/Complaints.h"
#include "texts/DashboardTexts.h"
#include "texts/WidgetTexts.h"
#include "wire/VelmoraProtocol.h"

#include <QObject>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// The resident application's model as the views see it: the properties of wire::face under their own names,
/// read only, and what the daemon tells of the charger. A view changes one by `set`; what then changes comes
/// back from the application.
///
/// Whoever has a link to the application feeds it by `apply` and carries its two requests. Until then it
/// shows the values that a model begins with.
class RemoteModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("There is one, and windows are given it.")
    Q_PROPERTY(double percentage READ percentage NOTIFY changed)
    Q_PROPERTY(QString chargingState READ chargingState NOTIFY changed)
    Q_PROPERTY(bool isAppleRecommendedModeEnabled READ isAppleRecommendedModeEnabled NOTIFY changed)
    Q_PROPERTY(bool isTemporaryOverrideEnabled READ isTemporaryOverrideEnabled NOTIFY changed)
    Q_PROPERTY(bool isLimitReached READ isLimitReached NOTIFY changed)
    Q_PROPERTY(QString thermalState READ thermalState NOTIFY changed)
    Q_PROPERTY(QString powerSource READ powerSource NOTIFY changed)
    Q_PROPERTY(qint64 timeToFull READ timeToFull NOTIFY changed)
    Q_PROPERTY(qint64 timeToEmpty READ timeToEmpty NOTIFY changed)
    Q_PROPERTY(qint64 timeToLimit READ timeToLimit NOTIFY changed)
    Q_PROPERTY(bool isSimulationModeEnabled READ isSimulationModeEnabled NOTIFY changed)
    Q_PROPERTY(double customChargeLimit READ customChargeLimit NOTIFY changed)
    Q_PROPERTY(double customHysteresis READ customHysteresis NOTIFY changed)
    Q_PROPERTY(bool isStorageModeEnabled READ isStorageModeEnabled NOTIFY changed)
    Q_PROPERTY(bool notifyOnLimit READ notifyOnLimit NOTIFY changed)
    Q_PROPERTY(bool notifyOnHeat READ notifyOnHeat NOTIFY changed)
    Q_PROPERTY(bool notifyOnCycle READ notifyOnCycle NOTIFY changed)
    Q_PROPERTY(bool notifyOnLowBattery READ notifyOnLowBattery NOTIFY changed)
    Q_PROPERTY(double lowBatteryLimit READ lowBatteryLimit NOTIFY changed)
    Q_PROPERTY(bool notifyOnPowerChange READ notifyOnPowerChange NOTIFY changed)
    /// The user's machines: each a map of `id`, `name`, `status` and `battery`, texts all.
    Q_PROPERTY(QVariantList fleet READ fleet NOTIFY fleetChanged)
    Q_PROPERTY(QString selectedDeviceID READ selectedDeviceID NOTIFY changed) ///< empty: none
    Q_PROPERTY(QString lastSync READ lastSync NOTIFY changed)                 ///< empty: never
    // What the values say; see dashboard.
    Q_PROPERTY(QString statusLine READ statusLine NOTIFY changed)
    Q_PROPERTY(QString limiterText READ limiterText NOTIFY changed)
    Q_PROPERTY(QString limitEffect READ limitEffect NOTIFY changed)
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

    /// Takes values from outside, then says `changed` once. A value of another type than wire::face has, or
    /// that is not finite, is refused with a line in the log and the one before stays; so are unknown names,
    /// silently.
    void apply(const QVariantMap& values);
    /// The same for those of wire::face::charger; one of another type there counts as not told.
    void applyCharger(const QVariantMap& values);

    /// Asks the application to change a property of the model.
    Q_INVOKABLE void set(const QString& property, const QVariant& value)
    {
        Q_EMIT setWanted(property, value);
    }
    /// When charging would begin again with these two. Depends on what `changed` tells of.
    Q_INVOKABLE QString startEffect(double limit, double hysteresis) const;
    Q_INVOKABLE void selectDevice(const QString& id); ///< empty: none
    Q_INVOKABLE void toggleTemporaryOverride() { Q_EMIT operationWanted("toggleTemporaryOverride"); }
    /// Asks for samples that have come since.
    Q_INVOKABLE void fetchHistory() { Q_EMIT operationWanted("fetchHistory"); }

    double percentage() const { return values_.percentage; }
    QString chargingState() const { return values_.chargingState; }
    bool isAppleRecommendedModeEnabled() const { return values_.isAppleRecommendedModeEnabled; }
    bool isTemporaryOverrideEnabled() const { return values_.isTemporaryOverrideEnabled; }
    bool isLimitReached() const { return values_.isLimitReached; }
    QString thermalState() const { return values_.thermalState; }
    QString powerSource() const { return values_.powerSource; }
    qint64 timeToFull() const { return values_.timeToFull; }
    qint64 timeToEmpty() const { return values_.timeToEmpty; }
    qint64 timeToLimit() const { return values_.timeToLimit; }
    bool isSimulationModeEnabled() const { return values_.isSimulationModeEnabled; }
    double customChargeLimit() const { return values_.customChargeLimit; }
    double customHysteresis() const { return values_.customHysteresis; }
    bool isStorageModeEnabled() const { return values_.isStorageModeEnabled; }
    bool notifyOnLimit() const { return values_.notifyOnLimit; }
    bool notifyOnHeat() const { return values_.notifyOnHeat; }
    bool notifyOnCycle() const { return values_.notifyOnCycle; }
    bool notifyOnLowBattery() const { return values_.notifyOnLowBattery; }
    double lowBatteryLimit() const { return values_.lowBatteryLimit; }
    bool notifyOnPowerChange() const { return values_.notifyOnPowerChange; }

    const QVariantList& fleet() const { return fleet_; }
    QString selectedDeviceID() const { return selectedDevice_; }
    QString lastSync() const;

    QString statusLine() const { return said(dashboard::statusLine); }
    QString limiterText() const { return said(dashboard::limiterText); }
    QString limitEffect() const { return said(dashboard::limitEffect); }
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
    void changed();
    void historyChanged();
    void fleetChanged();
    void setWanted(const QString& property, const QVariant& value);
    /// By one of wire::face's names.
    void operationWanted(const QString& operation);

private:
    /// As BatteryModel begins.
    struct Values {
        double percentage = 50;
        QString chargingState = "Idle";
        bool isAppleRecommendedModeEnabled = true;
        bool isTemporaryOverrideEnabled = false;
        bool isLimitReached = false;
        QString thermalState = "Nominal";
        QString powerSource = "Battery";
        qint64 timeToFull = -1;
        qint64 timeToEmpty = -1;
        qint64 timeToLimit = -1;
        bool isSimulationModeEnabled = false;
        double customChargeLimit = 80;
        double customHysteresis = 2;
        bool isStorageModeEnabled = false;
        bool notifyOnLimit = true;
        bool notifyOnHeat = true;
        bool notifyOnCycle = false;
        bool notifyOnLowBattery = true;
        double lowBatteryLimit = 20;
        bool notifyOnPowerChange = true;
    };
    struct Field;
    static const std::vector<Field>& fields();

    /// Each says whether `value` was one that it can have.
    bool applyHistory(const QVariant& value);
    bool applyFleet(const QVariant& value);
    bool applySelection(const QVariant& value);
    bool applyLastSync(const QVariant& value);
    void refuse(const QString& property);

    dashboard::Situation situation() const;
    QString said(std::string (*words)(const dashboard::Situation&)) const;
    struct Degradation {
        QString text;
        QString accessibleName;
        QString color;
    };
    static Degradation degradationOf(const std::vector<HSHistorySnapshot>& history);
    static Date timeOfDay();

    std::function<Date()> now_;
    Values values_;
    KeyedArchive charger_; ///< as it was told
    std::vector<HSHistorySnapshot> history_;
    Degradation degradation_;
    QVariantList fleet_;
    QString selectedDevice_;
    std::optional<Date> lastSync_;
    QtLog log_;
    Complaints complaints_;
};

} // namespace velmora
