// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/QtLog.h"

#include <QByteArray>
#include <QLoggingCategory>
#include <QString>

namespace velmora {

void QtLog::setUp()
{
    qSetMessagePattern(QStringLiteral("%{if-debug}<7>%{endif}%{if-info}<6>%{endif}%{if-warning}<4>%{endif}"
                                      "%{if-critical}<3>%{endif}%{if-fatal}<2>%{endif}"
                                      "app.velmora[%{category}]: %{message}"));
}

void QtLog::write(LogLevel level, std::string_view category, std::string_view text)
{
    const QByteArray name(category.data(), static_cast<qsizetype>(category.size()));
    const auto line = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).simplified();
    const QMessageLogger logger(nullptr, 0, nullptr, name.constData());
    switch (level) {
    case LogLevel::debug:
        logger.debug().noquote() << line;
        break;
    case LogLevel::info:
        logger.info().noquote() << line;
        break;
    case LogLevel::warning:
        logger.warning().noquote() << line;
        break;
    case LogLevel::error:
        logger.critical().noquote() << line;
        break;
    }
}

} // namespace velmora
