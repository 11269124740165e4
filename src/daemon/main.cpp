// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Program.h"
#include "base/Heap.h"
#include "base/Translation.h"

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc > 1) {
        const auto text = velmora::tr("%1 takes no arguments; systemd starts it. See README.md.", argv[0]);
        std::fprintf(stderr, "%s\n", text.c_str());
        return 2;
    }
    velmora::keepHeapSmall();
    return velmora::runDaemon();
}
