// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteObject.h"

#include <QPoint>
#include <optional>

namespace velmora {

/// What a person has set about one of the widgets: wire::face::widget.
class RemoteWidget : public RemoteObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("a property of Widgets")
    Q_PROPERTY(bool isPinned READ isPinned NOTIFY changed)
    Q_PROPERTY(bool isShownAtLogIn READ isShownAtLogIn NOTIFY changed)
public:
    using RemoteObject::RemoteObject;

    void apply(const QVariantMap& values) override;

    /// Asks the application to change one of the properties.
    Q_INVOKABLE void set(const QString& property, const QVariant& value)
    {
        Q_EMIT setWanted(property, value);
    }

    bool isPinned() const { return isPinned_; }
    bool isShownAtLogIn() const { return isShownAtLogIn_; }

    /// Where a person put it; nothing where it was never moved, that is not known yet, or no display has it.
    std::optional<QPoint> place() const;
    void keepPlace(QPoint place);
    /// The application has told.
    bool isKnown() const { return isKnown_; }

private:
    bool isPinned_ = false;
    bool isShownAtLogIn_ = false;
    QList<int> place_; ///< two, or none
    bool isKnown_ = false;
};

/// The widgets that there are.
class Widgets : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(velmora::RemoteWidget* small READ small CONSTANT)
    Q_PROPERTY(velmora::RemoteWidget* medium READ medium CONSTANT)
public:
    using QObject::QObject;

    RemoteWidget* small() { return &small_; }
    RemoteWidget* medium() { return &medium_; }

private:
    RemoteWidget small_;
    RemoteWidget medium_;
};

} // namespace velmora
