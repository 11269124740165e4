// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "program/NoHaptics.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace velmora {

/// Haptic feedback for the views.
class HapticFeedback : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
public:
    explicit HapticFeedback(QObject* parent = nullptr) : QObject(parent) {}

    void use(std::shared_ptr<Haptics> device) { device_ = std::move(device); }

    Q_INVOKABLE void alignment() { device_->perform(Haptics::Pattern::alignment); }

private:
    std::shared_ptr<Haptics> device_ = std::make_shared<NoHaptics>();
};

} // namespace velmora
