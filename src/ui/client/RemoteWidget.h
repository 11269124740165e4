// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteObject.h"

#include <QPoint>
#include <optional>

namespace velmora {

/// What a person has set about one of the widgets: wire::face::widget.
class RemoteWidget : public velmora::RemoteObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("a property of Widgets")
    static constexpr const auto& table = wire::face::widget::properties;
    VELMORA_MIRRORED(bool, isPinned)
    VELMORA_MIRRORED(bool, isShownAtLogIn)
public:
    using RemoteObject::RemoteObject;

    /// Where a person put it; nothing where it was never moved, that is not known yet, or no display has it.
    std::optional<QPoint> place() const;
    void keepPlace(QPoint place);
};

} // namespace velmora
