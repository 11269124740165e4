// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Version.h"

namespace velmora {

const char* version()
{
    return VELMORA_VERSION;
}

std::string versionLine(const char* program)
{
    return std::string(program) + ' ' + version() + '\n';
}

} // namespace velmora
