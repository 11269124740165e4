// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// velmora beside the tray programs for batteries that are installed: the same display, buses, laptop and
// minute. Started by ./bench/run, which puts a session bus, Xvfb and umockdev around it.

#include "Await.h"
#include "MockLaptop.h"
#include "PrivateBus.h"
#include "Screen.h"
#include "Table.h"
#include "TemporaryFolder.h"
#include "Tray.h"
#include "bus/DBus.h"
#include "wire/ModelFace.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <thread>

namespace velmora {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using Figure = std::optional<double>;

constexpr int starts = 15;
constexpr int clicks = 15;
constexpr auto patience = usualPatience;
constexpr auto iconPatience = 4s; ///< for an icon that may be shown by the other tray
constexpr auto settling = 20s;    ///< after the start: icons, first looks
constexpr auto resting = 60s;
constexpr auto looking = 3s; ///< at the open panel

/// What one tray program cost.
struct Costs {
    std::string title;
    Figure icon; ///< ms
    Memory memory{};
    double wakeUps = 0; ///< in a minute
};

/// What velmora's panel cost.
struct PanelCosts {
    std::vector<double> latencies; ///< ms
    Memory windows{}, residentAfter{};
};

/// Where all of them run.
class Stage {
public:
    Stage(std::string bin, const std::filesystem::path& folder)
        : bin_(std::move(bin)), folder_(folder), tray_(bin_, folder)
    {
        sd_bus* opened = nullptr;
        dbus::check(sd_bus_open_user(&opened), "the session bus");
        session_.reset(opened);
        const char* ownName = nullptr; // known once the bus lets us in, for which it waits half a minute only
        dbus::check(sd_bus_get_unique_name(opened, &ownName), "the session bus");
        dbus::check(sd_bus_open_system(&opened), "the system bus");
        system_.reset(opened);
        daemon_ = serve({.title = "velmorad", .path = bin_ + "/velmorad"}, "app.velmora.daemon");
        upower_ = serve({.title = "upowerd", .path = "/usr/libexec/upowerd"}, "org.freedesktop.UPower");
        laptop_.holdOnMains();
    }

    /// From the start of the process until its icon is in the tray; nothing where that is the other tray.
    Figure startToIcon(const Program& program)
    {
        std::vector<double> times;
        while (times.size() < starts) {
            if (!tray_.awaitNone(patience)) throw std::runtime_error("an icon stays in the tray");
            const auto begun = Clock::now();
            const auto process = start(program);
            if (!tray_.awaitItem(iconPatience)) return std::nullopt;
            times.push_back(Milliseconds(Clock::now() - begun).count());
        }
        return quantile(times, 0.5);
    }

    /// All at once, with nothing to do.
    void rest(const std::vector<Program>& programs, std::vector<Costs>& costs)
    {
        std::vector<std::unique_ptr<Process>> processes;
        for (const auto& program : programs) processes.push_back(start(program));
        std::this_thread::sleep_for(settling);
        std::vector<long> before;
        for (const auto& process : processes) before.push_back(process->wakeUps());
        std::this_thread::sleep_for(resting);
        for (std::size_t i = 0; i < costs.size(); ++i) {
            costs[i].wakeUps = static_cast<double>(processes[i]->wakeUps() - before[i]);
            costs[i].memory = processes[i]->memory();
        }
    }

    /// Clicks on the icon, which opens the panel or closes it.
    PanelCosts openAndClose(const Program& velmora)
    {
        PanelCosts costs;
        const auto process = start(velmora);
        const auto icon = tray_.awaitItem(patience);
        if (!icon) throw std::runtime_error("velmora shows no icon");
        for (int i = 0; i < clicks; ++i) {
            costs.latencies.push_back(clickToFrame(*icon));
            if (i == 0) std::this_thread::sleep_for(looking);
            if (i == 0) costs.windows = memoryOf(processOf(session_.get(), windowsName).value());
            close(*icon);
        }
        costs.residentAfter = process->memory();
        return costs;
    }

private:
    static constexpr auto windowsName = wire::windows::serviceName;

    std::unique_ptr<Process> start(Program program)
    {
        program.environment.push_back("UMOCKDEV_DIR=" + laptop_.root());
        program.environment.push_back("VELMORA_LOG=stderr");
        for (const char* place : {"STATE_DIRECTORY", "UPOWER_HISTORY_DIR"})
            program.environment.push_back(std::string(place) + "=" + folder_.string());
        return std::make_unique<Process>(program, folder_ / (program.title + ".log"));
    }

    std::unique_ptr<Process> serve(const Program& program, const char* name)
    {
        auto process = start(program);
        if (!await([&] { return processOf(system_.get(), name).has_value(); }))
            throw std::runtime_error(program.title + " did not come to the bus");
        return process;
    }

    /// A row across the place where the panel opens.
    std::vector<std::uint8_t> view() const { return screen_.row({screen_.width() - 300, 150}, 280); }

    double clickToFrame(Spot icon) const
    {
        const auto before = view();
        const auto begun = Clock::now();
        screen_.click(icon);
        if (!await([&] { return view() != before; })) throw std::runtime_error("no panel after a click");
        return Milliseconds(Clock::now() - begun).count();
    }

    void close(Spot icon) const
    {
        std::this_thread::sleep_for(500ms); // no double click
        screen_.click(icon);
        if (!await([&] { return !processOf(session_.get(), windowsName); }))
            throw std::runtime_error("the panel does not close");
        std::this_thread::sleep_for(500ms);
    }

    std::string bin_;
    std::filesystem::path folder_;
    Screen screen_;
    Tray tray_;
    MockLaptop laptop_{70};
    dbus::Bus session_, system_;
    std::unique_ptr<Process> daemon_, upower_;
};

/// velmora first, and the others that are installed.
std::vector<Program> programsIn(const std::string& bin)
{
    std::vector<Program> all{{.title = "velmora", .path = bin + "/velmora"},
                             {.title = "cbatticon", .path = "/usr/bin/cbatticon"},
                             {.title = "lxqt-powermanagement", .path = "/usr/bin/lxqt-powermanagement"},
                             {.title = "fdpowermon", .path = "/usr/bin/fdpowermon"},
                             {.title = "xfce4-power-manager",
                              .path = "/usr/bin/xfce4-power-manager",
                              .arguments = {"--no-daemon"}}};
    std::erase_if(all, [](const Program& one) { return !std::filesystem::exists(one.path); });
    return all;
}

/// The columns are the programs, and at the end the aim for velmora's own figure.
void report(const std::vector<Costs>& all, const std::optional<PanelCosts>& panel)
{
    const auto row = [&](const char* what, const char* unit, int decimals, const char* aim,
                         const std::function<Figure(const Costs&)>& of) {
        std::vector<std::string> cells;
        for (const auto& costs : all) cells.push_back(figure(of(costs), decimals));
        cells.emplace_back(aim);
        printLine(what, unit, cells);
    };
    const auto own = [&](const char* what, const char* unit, int decimals, const char* aim,
                         const std::function<double(const PanelCosts&)>& of) {
        row(what, unit, decimals, aim, [&](const Costs& costs) {
            return panel && &costs == &all.front() ? Figure(of(*panel)) : std::nullopt;
        });
    };
    std::vector<std::string> titles, rule(all.size() + 1, "--:");
    for (const auto& costs : all) titles.push_back(costs.title);
    titles.emplace_back("aim");
    printLine("", "unit", titles);
    printLine("---", "---", rule);
    row("resident memory (RSS)", "MB", 1, "10",
        [](const Costs& c) { return megabytes(c.memory.residentKilobytes); });
    row("of its own (USS)", "MB", 1, "4", [](const Costs& c) { return megabytes(c.memory.ownKilobytes); });
    row("wake-ups in a minute", "", 0, "2", [](const Costs& c) { return c.wakeUps; });
    row("start to icon in the tray", "ms", 0, "50", [](const Costs& c) { return c.icon; });
    own("click to first frame, p50", "ms", 0, "150",
        [](const PanelCosts& c) { return quantile(c.latencies, 0.5); });
    own("click to first frame, the slowest", "ms", 0, "",
        [](const PanelCosts& c) { return quantile(c.latencies, 1); });
    own("panel open: the windows' RSS", "MB", 1, "55",
        [](const PanelCosts& c) { return megabytes(c.windows.residentKilobytes); });
    own("panel open: the windows' USS", "MB", 1, "",
        [](const PanelCosts& c) { return megabytes(c.windows.ownKilobytes); });
    own("panel closed: RSS of all that is left", "MB", 1, "10",
        [](const PanelCosts& c) { return megabytes(c.residentAfter.residentKilobytes); });
}

void say(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
}

void run(const std::string& bin)
{
    const TemporaryFolder folder;
    const PrivateBus privateBus;
    Stage stage(bin, folder.path());
    const auto programs = programsIn(bin);
    std::vector<Costs> costs;
    say("Icons ...");
    for (const auto& one : programs) costs.push_back({.title = one.title, .icon = stage.startToIcon(one)});
    say("Nothing to do (a minute and a half) ...");
    stage.rest(programs, costs);
    std::optional<PanelCosts> panel;
    if (std::filesystem::exists(bin + "/velmora-ui")) {
        say("Clicks ...");
        panel = stage.openAndClose(programs.front());
    }
    report(costs, panel);
}

} // namespace

} // namespace velmora

int main(int argc, char** argv)
try {
    if (argc != 2) {
        std::fprintf(stderr, "usage: umockdev-wrapper bench_tray FOLDER-OF-PROGRAMS\n");
        return 2;
    }
    velmora::run(argv[1]);
    return 0;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "bench_tray: %s\n", failure.what());
    return 1;
}
