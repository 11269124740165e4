// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "state/StateDirectory.h"

#include <cstdlib>
#include <string>

namespace velmora {

std::filesystem::path stateDirectory()
{
    const char* given = std::getenv("STATE_DIRECTORY");
    const std::string all = given && *given ? given : "/var/lib/velmora";
    return all.substr(0, all.find(':'));
}

} // namespace velmora
