// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "program/CommandLine.h"

namespace velmora {

/// velmora-ui: shows windows until the last one closes, or the resident application is gone. A second one has
/// the first do what it was started for. The exit status: 0, 1 where that was impossible, 2 for arguments
/// that mean nothing.
int runWindows(int argc, char** argv);

} // namespace velmora
