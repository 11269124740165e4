// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "windows/Windows.h"

#include <QDBusContext>
#include <QObject>

namespace velmora {

/// The windows on the session bus; see wire::windows. Slots are its methods: a call with other arguments, or
/// for a window that there is not, is answered with an error.
class WindowsService : public QObject, protected QDBusContext {
    Q_OBJECT
public:
    explicit WindowsService(Windows& windows) : windows_(windows) {}

    /// False where `bus` knows another one already.
    bool publish(QDBusConnection bus);

    /// The wire's value for an unknown place.
    static std::optional<QPoint> place(int x, int y);

public Q_SLOTS:
    Q_SCRIPTABLE void Show(const QString& window, const QString& token);
    Q_SCRIPTABLE void ShowInactive(const QString& window);
    Q_SCRIPTABLE void Toggle(const QString& window, int x, int y, const QString& token);

private:
    bool refusesUnknown(const QString& window) const;
    void answer(bool isOpen) const;

    Windows& windows_;
};

} // namespace velmora
