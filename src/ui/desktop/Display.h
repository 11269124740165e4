// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "desktop/PlatformChoice.h"

namespace velmora {

/// Those of this environment. Needs no QGuiApplication.
DisplayFacts presentDisplay();

/// Has the QGuiApplication that is made next connect there, at no more cost than painting in memory needs.
void prepare(const PlatformChoice& choice);

} // namespace velmora
