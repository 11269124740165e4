// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/FaceLink.h"
#include "client/RemoteModel.h"

#include <QDBusServiceWatcher>

namespace velmora {

/// Between the mirror of the model and the resident application: its values come in, its requests go out.
/// Tells when the application ends.
class ModelLink : public QObject {
    Q_OBJECT
public:
    /// `model` must outlive it.
    ModelLink(const QDBusConnection& bus, RemoteModel& model, QObject* parent = nullptr);

    /// The model has the application's values.
    bool isFed() const { return model_.isFed() && charger_.isSettled(); }

    /// There was an application.
    bool hasMet() const { return model_.isSettled(); }

    /// One of wire::face's actions.
    void activate(const QString& action);
    /// Asks the application to end.
    void quit();

Q_SIGNALS:
    void fed();
    /// There is no application, or no longer.
    void gone();

private:
    QDBusServiceWatcher watcher_;
    FaceLink model_;
    FaceLink charger_;
};

} // namespace velmora
