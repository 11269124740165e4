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

    /// Runs what changes a setting by a person's wish, so that what is sent meanwhile can be told from what
    /// the program sends by itself; without one it is run as it is.
    std::function<void(const std::function<void()>& act)> asPerson;

    /// Called when a client on the bus asks the application to quit; may not destroy this.
    std::function<void()> onQuit;

private:
    void bindProperties();
    void addOperations();
    void obey(const std::function<void()>& act) const;

    BatteryModel& model_;
    ExportedObject face_;
};

} // namespace velmora
