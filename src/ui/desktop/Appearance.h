// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QtQml/qqmlregistration.h>
#include <optional>

namespace velmora {

/// How the desktop wants windows to look, followed while they are open: from its settings portal, or from its
/// palette where the portal is absent or has no preference.
///
/// VELMORA_APPEARANCE=light or =dark in the environment overrides it.
class Appearance : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ isDark NOTIFY changed)
    /// The desktop's text scale, limited to 0.75 to 1.5; 1 is normal.
    Q_PROPERTY(double fontScale READ fontScale NOTIFY changed)
    /// A compositor blends windows with what lies behind them.
    Q_PROPERTY(bool translucent READ isTranslucent NOTIFY changed)
public:
    /// Asks `bus` for the portal's values without waiting for them.
    explicit Appearance(QObject* parent = nullptr,
                        const QDBusConnection& bus = QDBusConnection::sessionBus());

    bool isDark() const;
    double fontScale() const { return fontScale_; }
    bool isTranslucent() const { return translucent_; }

    /// Makes windows opaque, for pictures.
    void setOpaque();

    /// The portal has answered, or there is none.
    bool isSettled() const { return questions_ == 0; }

Q_SIGNALS:
    void changed();
    void settled();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void settingChanged(const QString& space, const QString& key, const QDBusVariant& value);

private:
    void ask(const QDBusConnection& bus, const QString& space, const QString& key);
    void colourFrames();
    void take(const QString& space, const QString& key, const QVariant& value);

    std::optional<bool> preference_; ///< dark, light; nothing where the palette decides
    std::optional<bool> framesFor_;  ///< the preference that frames are coloured for
    bool isOverridden_ = false;
    double fontScale_ = 1;
    bool translucent_;
    int questions_ = 0;
};

} // namespace velmora
