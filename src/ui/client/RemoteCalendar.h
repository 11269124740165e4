// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteObject.h"

#include <QString>

#include "texts/TravelTexts.h"

namespace velmora {

/// What the calendar tells of journeys: wire::face::calendar, and what that says in words.
class RemoteCalendar : public velmora::RemoteObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(CalendarContextManager)
    QML_SINGLETON
    static constexpr const auto& table = wire::face::calendar::properties;
    VELMORA_MIRRORED(bool, isConsentGiven)
    VELMORA_MIRRORED(bool, isTravelChargeOn)
    VELMORA_MIRRORED(bool, calendarAccessGranted)
    VELMORA_MIRRORED(bool, isTravelDayDetected)
    VELMORA_MIRRORED(bool, isLastScanWhole)
    Q_PROPERTY(QString journeyText READ journeyText NOTIFY changed)
    Q_PROPERTY(QString chargeText READ chargeText NOTIFY changed) ///< empty: there is nothing to say
public:
    explicit RemoteCalendar(QObject* parent = nullptr) : RemoteObject(wire::face::calendar::face, parent) {}

    /// Has the calendars read now, as far as that is allowed.
    Q_INVOKABLE void checkNow();

    QString journeyText() const;
    QString chargeText() const;

private:
    travel::Situation situation() const;
};

} // namespace velmora
