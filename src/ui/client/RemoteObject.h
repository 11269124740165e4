// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/QtLog.h"

#include <QObject>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>
#include <cmath>
#include <type_traits>

#include "platform/Complaints.h"

namespace velmora {

/// One of the small objects of the resident application's face as the views see it, under its own names and
/// read only. Whoever has a link to the application feeds it by `apply` and carries its two requests.
class RemoteObject : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
public:
    using QObject::QObject;

    /// Takes values from outside, then says `changed` once.
    virtual void apply(const QVariantMap& values) = 0;
    /// The application has no such object.
    virtual void giveUp() {}

Q_SIGNALS:
    void changed();
    void setWanted(const QString& property, const QVariant& value);
    void operationWanted(const QString& operation);

protected:
    /// The value of that name, if there is one: of another type, or not finite, it is a line in the log and
    /// the one before stays.
    template <typename T>
    void take(const QVariantMap& values, const char* name, T& place)
    {
        const auto value = values.constFind(QLatin1String(name));
        if (value == values.constEnd()) return;
        bool isSound = value->metaType() == QMetaType::fromType<T>();
        if constexpr (std::is_floating_point_v<T>)
            isSound = isSound && std::isfinite(value->template value<T>());
        if (isSound)
            place = value->template value<T>();
        else
            complaints_.raise(name, "Ignored an invalid value of " + std::string(name) +
                                        "; the previous one stays.");
    }

private:
    QtLog log_;
    Complaints complaints_{log_, "RemoteObject"};
};

} // namespace velmora
