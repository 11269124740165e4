// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Program.h"

#include <cstdio>
#include <malloc.h>

int main(int argc, char** argv)
{
    if (argc > 1) {
        std::fprintf(stderr, "%s takes no arguments; systemd starts it. See README.md.\n", argv[0]);
        return 2;
    }
    // The history as text is a hundred kilobytes, now and then: they shall go back to the kernel each time,
    // not stay a hole in the heap.
    mallopt(M_MMAP_THRESHOLD, 32 * 1024);
    return velmora::runDaemon();
}
