// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/CoreDumps.h"

#include <optional>
#include <sys/resource.h>

namespace velmora {

namespace {
std::optional<rlimit> before; // nothing: never forbidden
}

// systemd-coredump and apport, which the kernel starts whatever the limit is, keep to it themselves.
void forbidCoreDumps()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_CORE, &limit) != 0) return;
    before = limit;
    limit.rlim_cur = 0;
    setrlimit(RLIMIT_CORE, &limit);
}

void allowCoreDumpsOf(pid_t child)
{
    if (before) prlimit(child, RLIMIT_CORE, &*before, nullptr);
}

} // namespace velmora
