// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "StandInManager.h"
#include "bus/NameOwner.h"
#include "systemd/SystemdServiceManager.h"
#include "wire/VelmoraProtocol.h"

#include <charconv>
#include <csignal>
#include <cstdio>
#include <optional>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace velmora {

namespace {

constexpr auto usage =
    "usage: velmora-servicemanager [--enabled] [--prompt SECONDS] [--COURSE] DAEMON\n\n"
    "Stands in for systemd's manager on the bus that DBUS_SYSTEM_BUS_ADDRESS names, and says \"ready\" once\n"
    "it does. DAEMON is the program that it starts.\n\n"
    "  --enabled         the daemon has been installed before, and is started at once\n"
    "  --prompt SECONDS  how long the user thinks when asked for leave (default 2)\n"
    "  --COURSE          what comes of it instead of success: refuse, cancel, no-agent, missing, damaged,\n"
    "                    masked, fail\n";

using Course = StandInManager::Course;

constexpr std::pair<std::string_view, Course> courses[] = {
    {"--refuse", Course::refused},  {"--cancel", Course::cancelled}, {"--no-agent", Course::noAgent},
    {"--missing", Course::missing}, {"--damaged", Course::damaged},  {"--masked", Course::masked},
    {"--fail", Course::failing},
};

struct Orders {
    StandInManager::Options options{.thinking = std::chrono::seconds{2}};
    std::string daemon;
};

std::optional<std::chrono::milliseconds> seconds(std::string_view text)
{
    unsigned short value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return std::chrono::seconds{value};
}

bool takeCourse(std::string_view word, Course& course)
{
    for (const auto& [name, one] : courses) {
        if (word == name) course = one;
    }
    return course != Course::granted;
}

std::optional<Orders> ordersOf(int argc, char** argv)
{
    Orders orders;
    for (int index = 1; index < argc; ++index) {
        const std::string_view word = argv[index];
        if (word == "--enabled") {
            orders.options.isEnabled = true;
        } else if (word == "--prompt" && index + 1 < argc) {
            orders.options.thinking = seconds(argv[++index]);
            if (!orders.options.thinking) return std::nullopt;
        } else if (!word.starts_with("--")) {
            orders.daemon = word;
        } else if (!takeCourse(word, orders.options.course)) {
            return std::nullopt;
        }
    }
    return orders.daemon.empty() ? std::nullopt : std::optional(orders);
}

/// The daemon as a process of this one.
class Unit {
public:
    explicit Unit(std::string program) : program_(std::move(program)) {}
    ~Unit()
    {
        sd_event_source_disable_unref(end_);
        if (id_ <= 0) return;
        kill(id_, SIGTERM);
        waitpid(id_, nullptr, 0);
    }
    Unit(const Unit&) = delete;
    Unit& operator=(const Unit&) = delete;

    std::function<void()> onEnd;

    bool isRunning() const { return id_ > 0; }

    void start(const EventLoop& loop)
    {
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
        char* const arguments[] = {program_.data(), nullptr};
        const int failure = posix_spawn(&id_, program_.c_str(), nullptr, &attributes, arguments, environ);
        posix_spawnattr_destroy(&attributes);
        dbus::check(-failure, program_.c_str());
        end_ = sd_event_source_disable_unref(end_);
        dbus::check(sd_event_add_child(loop.handle(), &end_, id_, WEXITED, ended, this), "watch the daemon");
    }

private:
    static int ended(sd_event_source*, const siginfo_t*, void* self)
    {
        auto* unit = static_cast<Unit*>(self);
        unit->id_ = -1;
        if (unit->onEnd) unit->onEnd();
        return 0;
    }

    std::string program_;
    pid_t id_ = -1;
    sd_event_source* end_ = nullptr;
};

int run(const Orders& orders)
{
    EventLoop loop;
    loop.stopOn({SIGTERM, SIGINT});
    sigset_t child; // which the loop reaps
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    sigprocmask(SIG_BLOCK, &child, nullptr);

    const auto bus = dbus::openSystemBus(loop);
    Unit unit(orders.daemon);
    StandInManager manager(loop, bus.get(), orders.options);
    // As a unit of Type=dbus the daemon is up once it has its name.
    const NameOwner name(bus.get(), wire::serviceName, [&] { manager.finishJob("done"); });
    unit.onEnd = [&] { manager.finishJob("failed"); };
    manager.onStart = [&] {
        if (name.exists()) return manager.finishJob("done");
        if (!unit.isRunning()) unit.start(loop);
    };
    if (orders.options.isEnabled) unit.start(loop);
    std::puts("ready");
    std::fflush(stdout);
    loop.run();
    return 0;
}

} // namespace

} // namespace velmora

int main(int argc, char** argv)
try {
    const auto orders = velmora::ordersOf(argc, argv);
    if (!orders) {
        std::fputs(velmora::usage, stderr);
        return 2;
    }
    return velmora::run(*orders);
} catch (const std::exception& fault) {
    std::fprintf(stderr, "velmora-servicemanager: %s\n", fault.what());
    return 1;
}
