// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// What a view asks of the application around it. It says so by a signal; the program passes that on.
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

Q_SIGNALS:
    void dashboardWanted();
    void widgetWanted(const QString& size);
    void quitWanted();
};

} // namespace velmora
