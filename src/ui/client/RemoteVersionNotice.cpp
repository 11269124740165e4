// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteVersionNotice.h"

namespace velmora {

namespace wiring = wire::face::notice;

void RemoteVersionNotice::appeared()
{
    Q_EMIT operationWanted(QString::fromLatin1(wiring::appeared));
}

void RemoteVersionNotice::dismissed()
{
    Q_EMIT operationWanted(QString::fromLatin1(wiring::dismissed));
}

void RemoteVersionNotice::closed()
{
    keep(wiring::showMacOS264Banner, false);
    Q_EMIT changed();
    Q_EMIT setWanted(QString::fromLatin1(wiring::showMacOS264Banner), false);
}

} // namespace velmora
