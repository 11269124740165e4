// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>

namespace velmora {

/// SIGTERM and SIGINT as a wish to end, on Qt's loop. They are blocked from its construction on, in threads
/// made later too: make it first.
class TerminationSignals : public QObject {
    Q_OBJECT
public:
    TerminationSignals();
    ~TerminationSignals() override;

    /// Begins to say `received`; needs the application.
    void listen();

Q_SIGNALS:
    void received();

private:
    int descriptor_;
};

} // namespace velmora
