// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/UserName.h"

#include "base/Handle.h"

#include <array>
#include <cstdio>
#include <pwd.h>

namespace velmora {

std::string localUserName(uid_t user)
{
    const Handle<std::FILE, std::fclose> file(std::fopen("/etc/passwd", "re"));
    std::array<char, 4'096> texts{};
    passwd entry{};
    passwd* found = nullptr;
    while (file && fgetpwent_r(file.get(), &entry, texts.data(), texts.size(), &found) == 0)
        if (found->pw_uid == user) return found->pw_name;
    return {};
}

} // namespace velmora
