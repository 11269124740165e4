// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ScriptedProvider.h"

#include <csignal>
#include <cstdio>

// velmora-scriptedprovider: the identity provider of tests that are no C++. Prints its issuer, and is honest
// until it is terminated.
int main()
{
    sigset_t end;
    sigemptyset(&end);
    sigaddset(&end, SIGTERM);
    sigprocmask(SIG_BLOCK, &end, nullptr); // before the provider has threads, which inherit it
    const velmora::ScriptedProvider provider;
    if (std::puts(provider.issuer().c_str()) < 0 || std::fflush(stdout) != 0) return 1;
    int signal = 0;
    return sigwait(&end, &signal);
}
