// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "FaceObject.h"
#include "VersionNotice.h"

namespace velmora {

/// The notice on the session bus, beside the model: wire::face::notice. Main thread only.
class VersionNoticeObject {
public:
    /// All must outlive the object. Throws std::system_error where the bus takes no objects.
    VersionNoticeObject(MainLoop& loop, sd_bus* bus, VersionNotice& notice);
    VersionNoticeObject(const VersionNoticeObject&) = delete;
    VersionNoticeObject& operator=(const VersionNoticeObject&) = delete;

private:
    FaceObject face_;
};

} // namespace velmora
