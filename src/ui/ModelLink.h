// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "QtLog.h"
#include "RemoteModel.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <functional>

class QDBusMessage;

namespace velmora {

/// Between the mirror and the resident application: brings its values in and what a view wants out. Nothing
/// here waits for an answer, and nothing starts the application.
class ModelLink : public QObject {
    Q_OBJECT
public:
    /// Listens and asks for all values at once. `model` must outlive it.
    ModelLink(const QDBusConnection& bus, RemoteModel& model, QObject* parent = nullptr);

    /// The model has the application's values.
    bool isFed() const { return isFed_; }

    /// One of wire::face's actions.
    void activate(const QString& action);
    /// Asks the application to end.
    void quit();

Q_SIGNALS:
    void fed();
    /// There is no application, or no longer.
    void gone();

private Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& values,
                           const QStringList& invalidated);

private:
    using Answer = std::function<void(const QDBusMessage&)>;

    void fetchAll();
    void fetch(const QString& property);
    void setProperty(const QString& name, const QVariant& value);
    void callModel(const QString& operation);
    void send(const QString& interface, const QString& member, const QVariantList& arguments, Answer answer);

    QDBusConnection bus_;
    RemoteModel& model_;
    QDBusServiceWatcher watcher_;
    bool isFed_ = false;
    QtLog log_;
};

} // namespace velmora
