// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "FaceObject.h"
#include "WidgetSettings.h"

namespace velmora {

/// A widget's settings on the session bus: wire::face::widget. Main thread only.
class WidgetObject {
public:
    /// All must outlive the object. Throws std::system_error where the bus takes no objects.
    WidgetObject(MainLoop& loop, sd_bus* bus, const char* path, WidgetSettings& settings);
    WidgetObject(const WidgetObject&) = delete;
    WidgetObject& operator=(const WidgetObject&) = delete;

private:
    FaceObject face_;
};

} // namespace velmora
