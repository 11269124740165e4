// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// Requests of a view to the application around it, as signals that the program passes on.
class Requests : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
public:
    using QObject::QObject;

    Q_INVOKABLE void openDashboard() { Q_EMIT dashboardWanted(); }
    /// "small" or "medium".
    Q_INVOKABLE void openWidget(const QString& size) { Q_EMIT widgetWanted(size); }
    /// Ends the whole application at once.
    Q_INVOKABLE void quit() { Q_EMIT quitWanted(); }
    /// A tap for the finger: something has snapped into place.
    Q_INVOKABLE void tapAlignment() { Q_EMIT alignmentTapWanted(); }

Q_SIGNALS:
    void dashboardWanted();
    void widgetWanted(const QString& size);
    void quitWanted();
    void alignmentTapWanted();
};

} // namespace velmora
