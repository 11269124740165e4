// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Control.h"

#include "base/CoreDumps.h"

int main(int argc, char** argv)
{
    velmora::forbidCoreDumps(); // people type passwords into it
    return velmora::ctl::runControl(argc, argv);
}
