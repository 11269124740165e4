// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Shell.h"
#include "base/CoreDumps.h"
#include "base/Heap.h"
#include "base/Version.h"
#include "records/ServerVariables.h"

#include <cstdio>

int main(int argc, char** argv)
{
    const auto command = velmora::commandOf(argc, argv);
    if (!command || command == velmora::Command::help) {
        std::fputs(velmora::tr(velmora::usage).c_str(), command ? stdout : stderr);
        return command ? 0 : 2;
    }
    if (command == velmora::Command::version) {
        std::fputs(velmora::versionLine("velmora").c_str(), stdout);
        return 0;
    }
    velmora::forbidCoreDumps();
    velmora::forgetServerVariables();
    velmora::keepHeapSmall();
    return velmora::runApplication(*command);
}
