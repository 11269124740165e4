// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/CoreDumps.h"

#include <algorithm>
#include <optional>
#include <sys/resource.h>

namespace velmora {

namespace {

std::optional<rlimit> before; ///< core dumps were forbidden

} // namespace

// At a limit of 0 the kernel still hands the image to a program such as systemd-coredump. At 1 it makes none
// at all, for a file as little as for a program.
void forbidCoreDumps()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_CORE, &limit) != 0) return;
    before = limit;
    limit.rlim_cur = std::min<rlim_t>(1, limit.rlim_max);
    setrlimit(RLIMIT_CORE, &limit);
}

void restoreCoreDumps(pid_t child)
{
    if (before) prlimit(child, RLIMIT_CORE, &*before, nullptr);
}

} // namespace velmora
