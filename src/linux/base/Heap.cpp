// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Heap.h"

#include <malloc.h>

namespace velmora {

void keepHeapSmall()
{
    // Setting the threshold disables glibc's dynamic one, which rises after each large free() and then leaves
    // holes in the heap.
    mallopt(M_MMAP_THRESHOLD, 32 * 1024);
    mallopt(M_TRIM_THRESHOLD, 32 * 1024);
    mallopt(M_TOP_PAD, 8 * 1024);
    // Two workers that sleep most of the time need no heap of their own each.
    mallopt(M_ARENA_MAX, 1);
}

} // namespace velmora
