// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <string>

namespace velmora {

/// The version that this was built as: "0.1.0".
const char* version();

/// What `PROGRAM --version` prints: name and version on a line.
std::string versionLine(const char* program);

} // namespace velmora
