// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/ServerVariables.h"

#include <cstdlib>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace velmora {

void forgetServerVariables()
{
    std::vector<std::string> names;
    for (char** entry = environ; entry && *entry; ++entry) {
        const std::string_view variable(*entry);
        if (variable.starts_with("PG")) names.emplace_back(variable.substr(0, variable.find('=')));
    }
    for (const auto& name : names) unsetenv(name.c_str());
}

} // namespace velmora
