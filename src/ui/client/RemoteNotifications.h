// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteObject.h"

#include <QString>

namespace velmora {

/// Whether the desktop shows notices, and when the last one of each kind was sent:
/// wire::face::notifications, in words.
class RemoteNotifications : public velmora::RemoteObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(Notifications)
    QML_SINGLETON
    static constexpr const auto& table = wire::face::notifications::properties;
    VELMORA_MIRRORED(QString, server)
    VELMORA_MIRRORED(bool, isServerStartable)
    VELMORA_MIRRORED(bool, isInhibited)
    Q_PROPERTY(QString serverText READ serverText NOTIFY changed)
    Q_PROPERTY(QString testText READ testText NOTIFY changed) ///< empty: none was sent, or it is on its way
    // When a notice of that kind was last sent; empty: never.
    Q_PROPERTY(QString lastLimit READ lastLimit NOTIFY changed)
    Q_PROPERTY(QString lastPower READ lastPower NOTIFY changed)
    Q_PROPERTY(QString lastHeat READ lastHeat NOTIFY changed)
    Q_PROPERTY(QString lastCycle READ lastCycle NOTIFY changed)
    Q_PROPERTY(QString lastLowBattery READ lastLowBattery NOTIFY changed)
    Q_PROPERTY(QString lastTravel READ lastTravel NOTIFY changed)
public:
    explicit RemoteNotifications(QObject* parent = nullptr)
        : RemoteObject(wire::face::notifications::face, parent)
    {
    }

    Q_INVOKABLE void sendTestNotice();

    QString serverText() const;
    QString testText() const;
    QString lastLimit() const { return last("lastLimitNotice"); }
    QString lastPower() const { return last("lastPowerNotice"); }
    QString lastHeat() const { return last("lastHeatNotice"); }
    QString lastCycle() const { return last("lastCycleNotice"); }
    QString lastLowBattery() const { return last("lastLowBatteryNotice"); }
    QString lastTravel() const { return last("lastTravelNotice"); }

private:
    QString last(const char* property) const;
};

} // namespace velmora
