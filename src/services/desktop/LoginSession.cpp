// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/LoginSession.h"

#include "base/Handle.h"

#include <cstdlib>
#include <optional>
#include <systemd/sd-login.h>
#include <unistd.h>

namespace velmora {

namespace {

/// Nothing for one that logind does not know, or no longer.
std::optional<bool> isActive(const char* session)
{
    const int answer = sd_session_is_active(session);
    if (answer < 0) return std::nullopt;
    return answer > 0;
}

/// Nothing where `find` finds no session.
std::optional<bool> isFoundActive(int (*find)(char** session))
{
    Handle<char, std::free> session;
    if (find(out(session)) < 0) return std::nullopt;
    return isActive(session.get());
}

} // namespace

bool isOwnSessionActive()
{
    if (const auto own = isFoundActive([](char** session) { return sd_pid_get_session(0, session); }))
        return *own;
    if (const char* named = std::getenv("XDG_SESSION_ID"))
        if (const auto answer = isActive(named)) return *answer;
    return isFoundActive([](char** session) { return sd_uid_get_display(getuid(), session); }).value_or(true);
}

} // namespace velmora
