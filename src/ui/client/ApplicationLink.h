// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/ObjectLink.h"
#include "client/RemoteModel.h"

#include <QDBusServiceWatcher>
#include <memory>
#include <vector>

namespace velmora {

/// The resident application: its objects, each with its mirror here, and what it is asked to do. Tells when
/// it ends.
class ApplicationLink : public QObject {
    Q_OBJECT
public:
    /// Links the model and its charger at once. `model` must outlive this.
    ApplicationLink(const QDBusConnection& bus, RemoteModel& model, QObject* parent = nullptr);

    /// Links another object; `mirror` must outlive this.
    void add(RemoteObject& mirror);

    /// The model has the application's values, and all other objects have answered.
    bool isReady() const;

    /// There was an application.
    bool hasMet() const { return links_.front()->isSettled(); }

    /// One of wire::face's actions.
    void activate(const QString& action);
    /// Asks the application to end.
    void quit();

Q_SIGNALS:
    void ready();
    /// There is no application, or no longer.
    void gone();

private:
    QDBusConnection bus_;
    RemoteModel& model_;
    QDBusServiceWatcher watcher_;
    std::vector<std::unique_ptr<ObjectLink>> links_; ///< the model's first
};

} // namespace velmora
