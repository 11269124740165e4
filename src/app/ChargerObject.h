// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ChargerReport.h"
#include "FaceObject.h"

#include <functional>
#include <optional>

namespace velmora {

/// The daemon's report on the charger, passed on to the session bus beside the model: wire::face::charger.
/// Main thread only.
class ChargerObject {
public:
    using Report = std::function<std::optional<ChargerReport>()>; ///< what is known now

    /// All must outlive the object. Throws std::system_error where the bus takes no objects.
    ChargerObject(MainLoop& loop, sd_bus* bus, Report report);
    ChargerObject(const ChargerObject&) = delete;
    ChargerObject& operator=(const ChargerObject&) = delete;

    /// The report may be another one.
    void changed() { face_.derivedChanged(); }

private:
    FaceObject face_;
};

} // namespace velmora
