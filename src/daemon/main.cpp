// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Program.h"
#include "ThresholdsReturn.h"
#include "base/Heap.h"
#include "base/Translation.h"
#include "base/Version.h"

#include <cstdio>
#include <string_view>

namespace {

constexpr auto usage =
    velmora::trMark("usage: velmorad                         the daemon; systemd starts it\n"
                    "       velmorad --restore-thresholds    gives the charger what it held before Velmora,\n"
                    "                                        and ends; stop the daemon first\n"
                    "       velmorad --lift-heat-pause       ends a pause for heat that was left behind;\n"
                    "                                        systemd runs it after the daemon\n"
                    "       velmorad --help | --version\n");

bool print(const std::string& text)
{
    return std::fputs(text.c_str(), stdout) >= 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string_view option = argc == 2 ? argv[1] : "";
    if (option == "--restore-thresholds") return velmora::restoreThresholds();
    if (option == "--lift-heat-pause") return velmora::liftHeatPause();
    if (option == "--version") return print(velmora::versionLine("velmorad")) ? 0 : 1;
    if (option == "--help") return print(velmora::tr(usage)) ? 0 : 1;
    if (argc > 1) {
        std::fputs(velmora::tr(usage).c_str(), stderr);
        return 2;
    }
    velmora::keepHeapSmall();
    return velmora::runDaemon();
}
