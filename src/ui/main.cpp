// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "program/Program.h"

int main(int argc, char** argv)
{
    return velmora::runWindows(argc, argv);
}
