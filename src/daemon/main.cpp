// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Program.h"
#include "base/Heap.h"

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc > 1) {
        std::fprintf(stderr, "%s takes no arguments; systemd starts it. See README.md.\n", argv[0]);
        return 2;
    }
    velmora::keepHeapSmall();
    return velmora::runDaemon();
}
