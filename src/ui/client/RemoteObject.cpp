// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteObject.h"

#include "base/Date.h"
#include "base/Saturate.h"

#include <QDateTime>
#include <QList>
#include <QLocale>
#include <algorithm>

namespace velmora {

RemoteObject::RemoteObject(const Face& face, QObject* parent)
    : QObject(parent), face_(face), values_(face.properties.size())
{
}

void RemoteObject::apply(const QVariantMap& values)
{
    for (std::size_t row = 0; row < face_.properties.size(); ++row) {
        const auto& property = face_.properties[row];
        const auto value = values.constFind(QLatin1String(property.name));
        if (value == values.constEnd()) continue;
        if (const auto sound = wired::received(property.type, *value))
            take(row, *sound);
        else
            complaints_.raise(property.name, "Ignored an invalid value of " + std::string(property.name) +
                                                 "; the previous one stays.");
    }
    isFed_ = true;
    taken();
    Q_EMIT changed();
}

QString RemoteObject::moment(const char* name, const char* format) const
{
    const auto dates = value(name).value<QList<double>>();
    if (dates.isEmpty()) return {};
    const auto moment = QDateTime::fromSecsSinceEpoch(truncated(Date{dates.first()}.unixSeconds()));
    return QLocale::c().toString(moment, QString::fromLatin1(format));
}

std::size_t RemoteObject::rowOf(std::string_view name) const
{
    const auto found = std::ranges::find(face_.properties, name, &wire::face::Property::name);
    return static_cast<std::size_t>(found - face_.properties.begin());
}

wire::face::Property RemoteObject::declared(const QString& property) const
{
    const auto row = rowOf(property.toStdString());
    return row < face_.properties.size() ? face_.properties[row] : wire::face::Property{};
}

} // namespace velmora
