// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteCharger.h"

namespace velmora {

void RemoteCharger::taken()
{
    QVariantMap record;
    for (const auto& property : face().properties)
        record.insert(QLatin1String(property.name), value(property.name));
    report_.reset();
    if (value(wire::face::charger::isKnown).toBool())
        report_ = ChargerReport::unarchived(wired::archived(record));
}

} // namespace velmora
