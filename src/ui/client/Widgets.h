// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteWidget.h"

namespace velmora {

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
    RemoteWidget small_{wire::face::widget::small};
    RemoteWidget medium_{wire::face::widget::medium};
};

} // namespace velmora
