// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// What the dashboard costs: to open, to look at, to use. Started by ./bench/run, which puts a session bus,
// Xvfb and umockdev around it.

#include "Await.h"
#include "FullHistory.h"
#include "MockLaptop.h"
#include "PrivateBus.h"
#include "Screen.h"
#include "Table.h"
#include "TemporaryFolder.h"
#include "bus/DBus.h"
#include "wire/ModelFace.h"

#include <csignal>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace velmora {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int openings = 15;
constexpr int visits = 9;
constexpr int moves = 500;
constexpr int changes = 10;
constexpr auto betweenMoves = 4ms;
constexpr auto betweenChanges = 2400ms; ///< the daemon pushes once in two seconds at most
constexpr auto looking = 2s;            ///< at what has just opened
constexpr auto settling = 35s;          ///< the threads of Qt's pool end after half a minute
constexpr auto resting = 60s;

/// The links of the sidebar, and how far below the window's upper edge they are.
struct Page {
    const char* name;
    int y;
};
constexpr Page overview{"Overview", 52};
constexpr Page health{"Health Trends", 86};
constexpr Page notifications{"Notifications", 257};
constexpr std::array pages{
    overview,      health, Page{"Thermal History", 120}, Page{"Ecosystem Sync", 153}, Page{"Thresholds", 224},
    notifications,
};
constexpr int width = 900;
constexpr int height = 600;

/// velmora and all that it needs, over a laptop with a thousand samples behind it.
class Stage {
public:
    Stage(std::string bin, const std::filesystem::path& folder) : bin_(std::move(bin)), folder_(folder)
    {
        sd_bus* opened = nullptr;
        dbus::check(sd_bus_open_user(&opened), "the session bus");
        session_.reset(opened);
        const char* ownName = nullptr; // known once the bus lets us in, for which it waits half a minute only
        dbus::check(sd_bus_get_unique_name(opened, &ownName), "the session bus");
        dbus::check(sd_bus_open_system(&opened), "the system bus");
        system_.reset(opened);
        std::ofstream(folder_ / "history.json") << encodeHistory(fullHistory());
        daemon_ =
            start({.title = "velmorad",
                   .path = bin_ + "/velmorad",
                   .environment = {"UMOCKDEV_DIR=" + laptop_.root(), "STATE_DIRECTORY=" + folder_.string()}},
                  system_.get(), wire::serviceName);
        systemd_ = start({.title = "servicemanager",
                          .path = bin_ + "/velmora-servicemanager",
                          .arguments = {"--enabled", "/bin/true"}},
                         system_.get(), "org.freedesktop.systemd1");
        resident_ = start({.title = "velmora",
                           .path = bin_ + "/velmora",
                           .environment = {"LD_PRELOAD=", "XDG_CONFIG_HOME=" + folder_.string()}},
                          session_.get(), wire::face::serviceName);
    }

    /// Asks for the dashboard; how long until it is seen.
    double open()
    {
        screen_.movePointer({0, 0});
        const auto before = acrossTheMiddle();
        const auto begun = Clock::now();
        activate(wire::face::dashboardAction);
        require(await([&] { return acrossTheMiddle() != before; }), "no dashboard");
        const auto took = Milliseconds(Clock::now() - begun).count();
        require(await([&] { return screen_.windowOf(width, height).has_value(); }), "no window of its size");
        place_ = *screen_.windowOf(width, height);
        windows_ = processOf(session_.get(), wire::windows::serviceName).value();
        std::this_thread::sleep_for(looking);
        return took;
    }

    void close()
    {
        kill(windows_, SIGTERM);
        require(await([&] { return !processOf(session_.get(), wire::windows::serviceName); }), "it stays");
        require(await([&] { return !screen_.windowOf(width, height); }), "its window stays");
    }

    /// Clicks on a page's link; how long until another title is seen. Not for the page that is shown.
    double visit(const Page& page)
    {
        const auto title = [&] { return screen_.row(at(330, 38), width - 340); };
        screen_.movePointer(at(100, page.y)); // what the pointer alone changes is not meant
        std::this_thread::sleep_for(200ms);
        const auto before = title();
        const auto begun = Clock::now();
        screen_.click(at(100, page.y));
        require(await([&] { return title() != before; }), "a link does nothing");
        const auto took = Milliseconds(Clock::now() - begun).count();
        std::this_thread::sleep_for(looking);
        return took;
    }

    /// Processor time, in ms, of a hundred moves across the plot.
    double hover() const
    {
        const auto before = processorTimeOf(windows_);
        for (int i = 0; i < moves; ++i) {
            screen_.movePointer(at(400 + i * 7 % 450, 250));
            std::this_thread::sleep_for(betweenMoves);
        }
        return 100 * spentSince(before) / moves;
    }

    /// Processor time, in ms, of a change of the level by half of it.
    double change()
    {
        const auto before = processorTimeOf(windows_);
        for (int i = 0; i < changes; ++i) {
            laptop_.drainTo(i % 2 == 0 ? 25 : 75);
            laptop_.announceBattery();
            std::this_thread::sleep_for(betweenChanges);
        }
        return spentSince(before) / changes;
    }

    /// Wake-ups in a minute in which nothing happens.
    double rest()
    {
        laptop_.holdOnMains();
        screen_.movePointer({0, 0});
        std::this_thread::sleep_for(settling);
        const auto before = wakeUpsOf(windows_);
        std::this_thread::sleep_for(resting);
        return static_cast<double>(wakeUpsOf(windows_) - before);
    }

    Memory memory() const { return memoryOf(windows_); }

private:
    static void require(bool condition, const char* complaint)
    {
        if (!condition) throw std::runtime_error(complaint);
    }

    std::unique_ptr<Process> start(const Program& program, sd_bus* bus, const char* name)
    {
        auto process = std::make_unique<Process>(program, folder_ / (program.title + ".log"));
        require(await([&] { return processOf(bus, name).has_value(); }), program.path.c_str());
        return process;
    }

    void activate(const char* action)
    {
        dbus::check(sd_bus_call_method(session_.get(), wire::face::serviceName, wire::face::objectPath,
                                       "org.freedesktop.Application", "ActivateAction", nullptr, nullptr,
                                       "sava{sv}", action, 0, 0),
                    "velmora");
    }

    std::vector<std::uint8_t> acrossTheMiddle() const
    {
        return screen_.row({0, screen_.height() / 2}, screen_.width());
    }
    Spot at(int x, int y) const { return {place_.x + x, place_.y + y}; }
    double spentSince(Nanoseconds before) const
    {
        return Milliseconds(processorTimeOf(windows_) - before).count();
    }

    std::string bin_;
    std::filesystem::path folder_;
    Screen screen_;
    MockLaptop laptop_{70};
    dbus::Bus session_, system_;
    std::unique_ptr<Process> daemon_, systemd_, resident_;
    Spot place_{};
    pid_t windows_ = -1;
};

void row(const char* what, const char* unit, double value, int decimals, const char* aim)
{
    printLine(what, unit, {figure(value, decimals), aim});
}

void openOften(Stage& stage)
{
    std::vector<double> times;
    for (int i = 0; i < openings; ++i) {
        times.push_back(stage.open());
        stage.close();
    }
    row("request to first frame, p50", "ms", quantile(times, 0.5), 0, "150");
    row("request to first frame, the slowest", "ms", quantile(times, 1), 0, "");
}

void useIt(Stage& stage)
{
    stage.open();
    row("a change of the level, the ring in view: processor time", "ms", stage.change(), 1, "");
    std::vector<double> times;
    for (int i = 0; i < visits; ++i) {
        times.push_back(stage.visit(health));
        if (i + 1 < visits) stage.visit(overview);
    }
    row("click to the plot of 1,000 samples, p50", "ms", quantile(times, 0.5), 0, "");
    row("a hundred moves of the pointer over it: processor time", "ms", stage.hover(), 0, "");
    stage.visit(notifications);
    row("a change of the level that no page shows: processor time", "ms", stage.change(), 1, "");
    stage.visit(overview);
    row("wake-ups in a minute, open and unchanged", "", stage.rest(), 0, "2");
    stage.close();
}

void memoryRow(const std::string& what, const Memory& memory)
{
    printLine(what, figure(megabytes(memory.residentKilobytes), 1),
              {figure(megabytes(memory.dirtyKilobytes), 1)});
}

void lookAtEach(Stage& stage)
{
    printLine("open at", "RSS, MB", {"dirty, MB"});
    printLine("---", "--:", {"--:"});
    for (const auto& page : pages) {
        stage.open();
        if (&page != pages.data()) stage.visit(page);
        memoryRow(page.name, stage.memory());
        stage.close();
    }
    stage.open();
    for (auto page = pages.rbegin(); page != pages.rend(); ++page) stage.visit(*page);
    memoryRow("Overview, after all the others", stage.memory());
    stage.close();
    printLine("aim", "55", {"12"});
}

void run(const std::string& bin)
{
    const TemporaryFolder folder;
    const PrivateBus privateBus;
    Stage stage(bin, folder.path());
    printLine("", "unit", {"velmora-ui", "aim"});
    printLine("---", "---", {"--:", "--:"});
    openOften(stage);
    useIt(stage);
    std::puts("");
    lookAtEach(stage);
}

} // namespace

} // namespace velmora

int main(int argc, char** argv)
try {
    if (argc != 2) {
        std::fprintf(stderr, "usage: umockdev-wrapper bench_dashboard FOLDER-OF-PROGRAMS\n");
        return 2;
    }
    velmora::run(argv[1]);
    return 0;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "bench_dashboard: %s\n", failure.what());
    return 1;
}
