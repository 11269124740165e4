// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/ExportedObject.h"
#include "model/BatteryModel.h"

#include <functional>

namespace velmora {

/// The model's face on the session bus: every property and operation of wire::face, for the windows and for a
/// person's own scripts. A setting that is written reaches the daemon at once, before anything that it pushed
/// can undo it. Main thread only.
class ModelObject {
public:
    /// All must outlive the object. Throws std::system_error where the bus takes no objects.
    ModelObject(MainLoop& loop, sd_bus* bus, BatteryModel& model);
    ModelObject(const ModelObject&) = delete;
    ModelObject& operator=(const ModelObject&) = delete;

    /// Called when a client on the bus asks the application to quit; may not destroy this.
    std::function<void()> onQuit;

private:
    void bindProperties();
    void addOperations();

    BatteryModel& model_;
    ExportedObject face_;
};

} // namespace velmora
