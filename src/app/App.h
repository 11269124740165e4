// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "BatteryModel.h"
#include "LinuxPlatform.h"
#include "XPCClient.h"

#include <memory>

namespace velmora {

/// The resident application: the one model of this run, and the services that feed it, created in the order
/// in which they need each other. Main thread only.
class App {
public:
    explicit App(LinuxPlatform& platform);

    BatteryModel& model() { return model_; }

private:
    std::shared_ptr<XPCClient> client_;
    BatteryModel model_;
};

/// Runs velmora until SIGTERM or SIGINT; returns the exit status.
int runApp();

} // namespace velmora
