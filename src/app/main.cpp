// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "App.h"

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc > 1) {
        std::fprintf(stderr, "%s takes no arguments. See README.md.\n", argv[0]);
        return 2;
    }
    return velmora::runApp();
}
