// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <filesystem>

namespace velmora {

/// Where velmorad remembers: the first folder of $STATE_DIRECTORY, as systemd sets it, else /var/lib/velmora.
/// It need not exist.
std::filesystem::path stateDirectory();

} // namespace velmora
