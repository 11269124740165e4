// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Shell.h"
#include "base/Heap.h"

#include <cstdio>

int main(int argc, char** argv)
{
    const auto errand = velmora::errandOf(argc, argv);
    if (!errand || errand == velmora::Errand::help) {
        std::fputs(velmora::usage, errand ? stdout : stderr);
        return errand ? 0 : 2;
    }
    velmora::keepHeapSmall();
    return velmora::runApplication(*errand);
}
