// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteVersionNotice.h"

#include "wire/ModelFace.h"

namespace velmora {

namespace wired = wire::face::notice;

void RemoteVersionNotice::apply(const QVariantMap& values)
{
    take(values, wired::showMacOS264Banner, isShown_);
    Q_EMIT changed();
}

void RemoteVersionNotice::appeared()
{
    Q_EMIT operationWanted(QString::fromLatin1(wired::appeared));
}

void RemoteVersionNotice::dismissed()
{
    Q_EMIT operationWanted(QString::fromLatin1(wired::dismissed));
}

void RemoteVersionNotice::closed()
{
    isShown_ = false;
    Q_EMIT changed();
    Q_EMIT setWanted(QString::fromLatin1(wired::showMacOS264Banner), false);
}

} // namespace velmora
