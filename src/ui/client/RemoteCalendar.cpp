// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteCalendar.h"

#include "client/QtText.h"

namespace velmora {

namespace wiring = wire::face::calendar;

void RemoteCalendar::checkNow()
{
    Q_EMIT operationWanted(QString::fromLatin1(wiring::checkNow));
}

QString RemoteCalendar::journeyText() const
{
    return text(travel::journeyText(situation()));
}

QString RemoteCalendar::chargeText() const
{
    return text(travel::chargeText(situation()));
}

travel::Situation RemoteCalendar::situation() const
{
    travel::Situation now{.isConsentGiven = isConsentGiven(),
                          .isAccessGranted = calendarAccessGranted(),
                          .isDetected = isTravelDayDetected(),
                          .isLastScanWhole = isLastScanWhole(),
                          .stage = value(wiring::travelChargeStage).toString().toStdString()};
    const auto titles = value("detectedEventTitle").toStringList();
    if (!titles.isEmpty()) now.title = titles.first().toStdString();
    now.begins = moment(wiring::travelChargeBegins, "ddd HH:mm").toStdString();
    return now;
}

} // namespace velmora
