// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Descriptor.h"

#include <QObject>
#include <QSocketNotifier>
#include <memory>
#include <unistd.h>

namespace velmora {

/// Delivers SIGTERM and SIGINT on Qt's loop. They are blocked from its construction on, in later threads,
/// too: construct it first.
class TerminationSignals : public QObject {
    Q_OBJECT
public:
    TerminationSignals();

    /// Begins to emit `received`; needs the application.
    void listen();

Q_SIGNALS:
    void received();

private:
    Descriptor<::close> descriptor_;
    std::unique_ptr<QSocketNotifier> notifier_; ///< goes before its descriptor
};

} // namespace velmora
