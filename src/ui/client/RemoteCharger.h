// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteObject.h"

#include <optional>

#include "wire/ChargerReport.h"

namespace velmora {

/// What the daemon tells of the charger: wire::face::charger, as `velmora` passes it on. Not for QML.
class RemoteCharger : public RemoteObject {
    Q_OBJECT
public:
    explicit RemoteCharger(QObject* parent = nullptr) : RemoteObject(wire::face::charger::face, parent) {}

    /// Nothing while the daemon is not there, or has not told yet.
    const std::optional<ChargerReport>& report() const { return report_; }
    /// Why the daemon refused what a person asked for last; empty where it has not.
    QString refusal() const { return value(wire::face::charger::refusal).toString(); }

protected:
    void taken() override;

private:
    std::optional<ChargerReport> report_;
};

} // namespace velmora
