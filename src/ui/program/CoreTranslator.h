// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Translation.h"

#include <QTranslator>

namespace velmora {

/// Has qsTr and QObject::tr look texts up where the core does. A text that depends on a number goes through
/// `trn` instead: Qt's form for it reads "1 sample(s)" in English.
class CoreTranslator : public QTranslator {
public:
    using QTranslator::QTranslator;

    QString translate(const char* /*context*/, const char* text, const char* /*disambiguation*/,
                      int /*number*/) const override
    {
        return QString::fromStdString(translated(text));
    }
    bool isEmpty() const override { return false; }
};

} // namespace velmora
