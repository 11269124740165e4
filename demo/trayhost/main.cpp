// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// velmora-trayhost: a tray bar for a display without a desktop. "ready" on standard output says that it is
// on the screen and programs can register; it tells where their icons are.

#include "TrayHost.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <string_view>

namespace velmora {

namespace {

void say(const std::string& line)
{
    std::puts(line.c_str());
    std::fflush(stdout);
}

/// Until SIGTERM or SIGINT, or until the X server or the bus is gone.
int run(bool isLight)
{
    EventLoop loop;
    loop.stopOn({SIGTERM, SIGINT});
    std::signal(SIGPIPE, SIG_IGN); // nobody has to listen to what it says
    int status = 0;
    const auto lose = [&] {
        status = 1;
        loop.stop();
    };
    TrayBar bar(loop, isLight);
    bar.onLost = lose;
    const auto bus = dbus::openSessionBus(loop);
    std::function<void()> onHangUp = lose;
    const auto hangUp = dbus::onDisconnected(
        bus.get(),
        [](sd_bus_message*, void* told, sd_bus_error*) {
            (*static_cast<std::function<void()>*>(told))();
            return 0;
        },
        &onHangUp);
    StatusNotifierWatcher watcher(bus.get());
    const TrayHost host(watcher, bus.get(), bar, say);
    bar.onShown = [] { say("ready"); };
    loop.run();
    return status;
}

} // namespace

} // namespace velmora

int main(int argc, char** argv)
try {
    const std::string_view option = argc > 1 ? argv[1] : "";
    if (argc > 2 || (argc == 2 && option != "--light")) {
        std::fprintf(stderr, "usage: velmora-trayhost [--light]\n");
        return 2;
    }
    return velmora::run(option == "--light");
} catch (const std::exception& fault) {
    std::fprintf(stderr, "velmora-trayhost: %s\n", fault.what());
    return 1;
}
