// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteNotifications.h"

#include "client/QtText.h"
#include "texts/NoticeTexts.h"

#include <optional>

namespace velmora {

namespace wiring = wire::face::notifications;

void RemoteNotifications::sendTestNotice()
{
    Q_EMIT operationWanted(QString::fromLatin1(wiring::sendTestNotice));
}

QString RemoteNotifications::serverText() const
{
    return text(notices::serverText(server().toStdString(), isServerStartable(), isInhibited()));
}

QString RemoteNotifications::testText() const
{
    const auto result = value(wiring::testResult).toStringList();
    return text(notices::testText(
        result.isEmpty() ? std::nullopt : std::optional(result.first().toStdString()), isInhibited()));
}

QString RemoteNotifications::last(const char* property) const
{
    const auto last = moment(property);
    return last.isEmpty() ? last : text(notices::lastText(last.toStdString()));
}

} // namespace velmora
