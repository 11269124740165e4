// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/QtLog.h"
#include "client/RemoteObject.h"

#include <QDBusConnection>
#include <functional>

class QDBusMessage;

namespace velmora {

/// Between one object of the resident application and its mirror here: its values come in, what a view wants
/// goes out. Nothing here waits for an answer, and nothing starts the application.
class ObjectLink : public QObject {
    Q_OBJECT
public:
    /// Listens, and asks for all values at once; the mirror is given them first, and later those that
    /// changed. It must outlive this.
    ObjectLink(const QDBusConnection& bus, RemoteObject& mirror, QObject* parent = nullptr);

    /// The object has answered, be it that it does not tell its values.
    bool isSettled() const { return isSettled_; }

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
    /// One that no view may write is a line in the log.
    void set(const QString& property, const QVariant& value);
    void send(const QString& interface, const QString& member, const QVariantList& arguments,
              const Answer& answer);

    QDBusConnection bus_;
    RemoteObject& mirror_;
    QString path_;
    QString interface_;
    bool isSettled_ = false;
    QtLog log_;
};

} // namespace velmora
