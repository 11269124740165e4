// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/CoreDumps.h"
#include "program/Program.h"

int main(int argc, char** argv)
{
    velmora::forbidCoreDumps(); // people type passwords into it
    return velmora::runWindows(argc, argv);
}
