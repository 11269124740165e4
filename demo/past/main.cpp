// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// velmora-past: writes a history.json, as the daemon keeps it, to standard output: the one that a simulated
// laptop would have by now, or one that was recorded elsewhere, moved to now.

#include "LaptopOptions.h"
#include "LaptopPast.h"
#include "history/HistoryCodec.h"

#include <cstdio>
#include <ctime>
#include <exception>
#include <string_view>

namespace velmora {

namespace {

constexpr auto usage = "usage: velmora-past --laptop KIND|FILE.sysfs\n"
                       "       velmora-past --history FILE.json|FILE.csv\n";

past::Samples wanted(std::string_view option, const char* value, std::time_t now)
{
    const auto today = Date::fromUnix(static_cast<double>(now));
    if (option == "--history") return past::recorded(value, today);
    std::tm local{};
    localtime_r(&now, &local);
    LaptopOptions options;
    options.laptop = value;
    return past::lived(options.make(), today, static_cast<double>(local.tm_gmtoff));
}

int run(int argc, char** argv)
{
    const std::string_view option = argc == 3 ? argv[1] : "";
    if (option != "--laptop" && option != "--history") {
        std::fputs(usage, stderr);
        return 2;
    }
    const auto history = encodeHistory(wanted(option, argv[2], std::time(nullptr)));
    if (std::puts(history.c_str()) >= 0 && std::fflush(stdout) == 0) return 0;
    std::perror("velmora-past: cannot write the history");
    return 1;
}

} // namespace

} // namespace velmora

int main(int argc, char** argv)
try {
    return velmora::run(argc, argv);
} catch (const std::exception& fault) {
    std::fprintf(stderr, "velmora-past: %s\n", fault.what());
    return 1;
}
