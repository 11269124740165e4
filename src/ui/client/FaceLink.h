// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/QtLog.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>
#include <functional>
#include <span>

// After the others: moc 6.4 cannot read <compare> as the first header of the standard library.
#include "wire/ModelFace.h"

class QDBusMessage;

namespace velmora {

/// One object of the resident application's face as this program has it: its values come in, what a view
/// wants goes out. Nothing here waits for an answer, and nothing starts the application.
class FaceLink : public QObject {
    Q_OBJECT
public:
    using Face = wire::face::Face;
    using Apply = std::function<void(const QVariantMap& values)>;

    /// Listens, and asks for all values at once; `apply` is given them first, and later those that changed.
    FaceLink(const QDBusConnection& bus, const Face& face, Apply apply, QObject* parent = nullptr);

    /// The object has given its values.
    bool isFed() const { return isFed_; }
    /// It has answered, be it that there is no such object.
    bool isSettled() const { return isSettled_; }

    /// Asks the application to change a property. One that no view may write is a line in the log.
    void set(const QString& property, const QVariant& value);
    /// One of the object's operations.
    void call(const QString& operation);
    /// A method of another interface of the object.
    void call(const QString& interface, const QString& method, const QVariantList& arguments);

Q_SIGNALS:
    void settled();
    /// There is no application.
    void gone();

private Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& values,
                           const QStringList& invalidated);

private:
    using Answer = std::function<void(const QDBusMessage&)>;

    void fetchAll();
    void fetch(const QString& property);
    void send(const QString& interface, const QString& member, const QVariantList& arguments,
              const Answer& answer);

    QDBusConnection bus_;
    Face face_;
    QString path_;
    QString interface_;
    Apply apply_;
    bool isFed_ = false;
    bool isSettled_ = false;
    QtLog log_;
};

} // namespace velmora
