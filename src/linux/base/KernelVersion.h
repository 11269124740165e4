// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/SystemVersion.h"

#include <string_view>

namespace velmora {

/// Of the kernel that runs, by uname(2).
SystemVersion kernelVersion();

/// The two numbers that a kernel's release begins with, such as "6.1.0-18-amd64"; 0.0 for any other text.
SystemVersion versionOfRelease(std::string_view release);

} // namespace velmora
