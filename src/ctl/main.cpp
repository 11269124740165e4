// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Control.h"

int main(int argc, char** argv)
{
    return velmora::ctl::runControl(argc, argv);
}
