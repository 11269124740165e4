// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// velmorad, upowerd (where it is installed) and a bare loop side by side: the same laptop, bus and minute for
// each. Started by ./bench/run, which puts umockdev around it.

#include "Contender.h"
#include "FullHistory.h"
#include "MockLaptop.h"
#include "PrivateBus.h"
#include "Table.h"
#include "TemporaryFolder.h"
#include "bus/DBus.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <spawn.h>
#include <stdexcept>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace velmora {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

/// How often and how long is measured.
struct Plan {
    int starts = 15;
    int events = 200;
    int quietEvents = 60; ///< without a change of the level: nothing is worth keeping in a history
    int tracedEvents = 20;
    std::chrono::seconds holding = 10min;
};

/// For a first impression, in two minutes.
constexpr Plan shortPlan{.starts = 5, .events = 20, .quietEvents = 10, .tracedEvents = 5, .holding = 30s};

constexpr int firstLevel = 78; ///< percent, and one less at each event
constexpr int lastLevel = 20;  ///< after which it begins again
/// Between two events of one program: more than the two seconds in which velmorad pushes once.
constexpr auto spacing = 2100ms;
/// What a program does at once ends before that, and its second look begins later.
constexpr auto atOnce = 600ms;
constexpr auto settling = 8s; ///< after the plug: second looks and what is decided then
constexpr auto patience = 10s;

/// What one program cost.
struct Costs {
    std::vector<double> starts, latencies; ///< ms
    double processorTime = 0;              ///< ms an event
    double quietTime = 0;                  ///< ms an event, of what is done at once
    std::optional<double> calls;           ///< system calls an event
    double wakeUps = 0;                    ///< in ten minutes: of all threads
    double moments = 0;                    ///< in ten minutes: seconds in which it woke
    Memory memory{};
};

/// Fails unless `result` is a success, which it gives back.
int check(int result)
{
    return dbus::check(result, "the bus");
}

/// One program on a laptop of its own.
class Lane {
public:
    Lane(Contender contender, sd_bus* bus, const std::filesystem::path& folder)
        : contender_(std::move(contender)), bus_(bus), log_(folder / (contender_.program.title + ".log"))
    {
        contender_.program.environment.push_back("UMOCKDEV_DIR=" + laptop_.root());
        pushes_ = dbus::match(
            bus_,
            {.path = contender_.pushObject, .interface = contender_.pushInterface, .member = contender_.push},
            onPush, this);
    }

    const Contender& contender() const { return contender_; }

    void start()
    {
        const auto begun = Clock::now();
        process_ = std::make_unique<Process>(contender_.program, log_);
        while (!answers()) {
            if (Clock::now() - begun > patience) fail("does not answer");
            std::this_thread::sleep_for(200us);
        }
        costs_.starts.push_back(Milliseconds(Clock::now() - begun).count());
    }

    void end() { process_.reset(); }

    /// The next event, and the push that comes of it.
    void drain()
    {
        if (--level_ < lastLevel) level_ = firstLevel;
        laptop_.drainTo(level_);
        awaited_ = level_;
        const auto announced = Clock::now();
        laptop_.announceBattery();
        while (awaited_) {
            if (Clock::now() - announced > patience) fail("pushes nothing");
            if (check(sd_bus_process(bus_, nullptr)) == 0) check(sd_bus_wait(bus_, 100'000));
        }
        costs_.latencies.push_back(Milliseconds(arrived_ - announced).count());
    }

    void countFromHere() { timeBefore_ = process_->processorTime(); }
    void sumUp(int events) { costs_.processorTime = timeSince() / events; }

    /// An event that changes the minutes alone, up to the end of what is done at once.
    double drawPower(int milliwatts)
    {
        countFromHere();
        laptop_.drawPower(milliwatts);
        laptop_.announceBattery();
        std::this_thread::sleep_for(atOnce);
        const double time = timeSince();
        while (check(sd_bus_process(bus_, nullptr)) > 0) {
        }
        return time;
    }
    void sumUpQuiet(double time, int events) { costs_.quietTime += time / events; }

    void trace() { counter_.emplace(process_->id(), log_ + ".calls"); }
    void endTrace(int events)
    {
        if (const auto calls = counter_->end()) costs_.calls = static_cast<double>(*calls) / events;
        counter_.reset();
    }

    void hold() { laptop_.holdOnMains(); }
    void watch() { wakeUpsBefore_ = wakeUpsSeen_ = process_->wakeUps(); }
    /// To be called once a second.
    void noticeWakeUps()
    {
        const auto now = process_->wakeUps();
        if (std::exchange(wakeUpsSeen_, now) != now) ++costs_.moments;
    }
    void rest()
    {
        costs_.wakeUps = static_cast<double>(process_->wakeUps() - wakeUpsBefore_);
        costs_.memory = process_->memory();
    }

    const Costs& costs() const { return costs_; }

private:
    double timeSince() const { return Milliseconds(process_->processorTime() - timeBefore_).count(); }

    [[noreturn]] void fail(const char* what) const
    {
        throw std::runtime_error(contender_.program.title + " " + what + ", see " + log_);
    }

    /// Whether it tells of the battery by now.
    bool answers()
    {
        sd_bus_message* call = nullptr;
        check(sd_bus_message_new_method_call(bus_, &call, contender_.service.c_str(),
                                             contender_.object.c_str(), contender_.questionInterface.c_str(),
                                             contender_.question.c_str()));
        const dbus::Message question(call);
        sd_bus_message* reply = nullptr;
        if (sd_bus_call(bus_, call, 0, nullptr, &reply) < 0) return false;
        const dbus::Message answer(reply);
        const auto contents = Contents::of(reply);
        return !contents.numbers.empty() || !contents.texts.empty();
    }

    static int onPush(sd_bus_message* signal, void* self, sd_bus_error*)
    {
        auto* lane = static_cast<Lane*>(self);
        const auto now = Clock::now();
        if (!lane->awaited_ || !std::ranges::count(Contents::of(signal).numbers, *lane->awaited_)) return 0;
        lane->arrived_ = now;
        lane->awaited_.reset();
        return 0;
    }

    Contender contender_;
    sd_bus* bus_;
    std::string log_;
    int level_ = firstLevel;
    MockLaptop laptop_{level_};
    std::optional<CallCounter> counter_;
    std::unique_ptr<Process> process_;
    dbus::Slot pushes_;
    std::optional<double> awaited_; ///< the level that the next push shall carry
    Clock::time_point arrived_;
    Nanoseconds timeBefore_{};
    long wakeUpsBefore_ = 0, wakeUpsSeen_ = 0;
    Costs costs_;
};

/// velmorad as it is after some weeks: with all the history that it keeps.
Contender velmorad(const std::string& bin, const std::filesystem::path& folder)
{
    const auto state = folder / "velmorad";
    std::filesystem::create_directories(state);
    std::ofstream(state / "history.json") << encodeHistory(fullHistory());
    return {.program = {.title = "velmorad",
                        .path = bin + "/velmorad",
                        .environment = {"STATE_DIRECTORY=" + state.string(), "VELMORA_LOG=stderr"}},
            .service = wire::serviceName,
            .object = wire::objectPath,
            .questionInterface = wire::daemon_protocol::interface,
            .question = wire::daemon_protocol::getBatteryState.member(),
            .pushObject = wire::objectPath,
            .pushInterface = wire::client_protocol::interface,
            .push = wire::client_protocol::batteryStateDidChange.member()};
}

Contender upowerd(const std::string& program, const std::filesystem::path& folder)
{
    const auto state = folder / "upowerd";
    std::filesystem::create_directories(state);
    return {.program = {.title = "upowerd",
                        .path = program,
                        .environment = {"UPOWER_HISTORY_DIR=" + state.string()}},
            .service = "org.freedesktop.UPower",
            .object = "/org/freedesktop/UPower",
            .questionInterface = "org.freedesktop.UPower",
            .question = "EnumerateDevices",
            .pushObject = "/org/freedesktop/UPower/devices/battery_BAT0",
            .pushInterface = "org.freedesktop.DBus.Properties",
            .push = "PropertiesChanged"};
}

Contender bareLoop(const std::string& bin)
{
    return {.program = {.title = "bare_loop", .path = bin + "/bare_loop"},
            .service = "app.velmora.BareLoop",
            .object = "/app/velmora/BareLoop",
            .questionInterface = "app.velmora.BareLoop",
            .question = "level",
            .pushObject = "/app/velmora/BareLoop",
            .pushInterface = "app.velmora.BareLoop",
            .push = "changed"};
}

using Lanes = std::vector<std::unique_ptr<Lane>>;

void say(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
}

void measureStarts(const Lanes& lanes, const Plan& plan)
{
    say("Starts ...");
    for (int i = 0; i < plan.starts; ++i) {
        for (const auto& lane : lanes) {
            lane->end();
            lane->start();
        }
    }
    std::this_thread::sleep_for(spacing);
}

/// In turns, so that a busy moment of the machine meets all alike.
void drain(const Lanes& lanes, int times)
{
    for (int i = 0; i < times; ++i) {
        for (const auto& lane : lanes) {
            std::this_thread::sleep_for(spacing / lanes.size());
            lane->drain();
        }
    }
    std::this_thread::sleep_for(spacing);
}

void measureEvents(const Lanes& lanes, const Plan& plan)
{
    say("Events (seven minutes) ...");
    for (const auto& lane : lanes) lane->countFromHere();
    drain(lanes, plan.events);
    for (const auto& lane : lanes) lane->sumUp(plan.events);

    say("Events without a change of the level (two minutes) ...");
    for (int i = 0; i < plan.quietEvents; ++i) {
        for (const auto& lane : lanes) lane->sumUpQuiet(lane->drawPower(8000 + i * 100), plan.quietEvents);
        std::this_thread::sleep_for(spacing - atOnce * lanes.size());
    }
    std::this_thread::sleep_for(spacing);
}

/// One after the other: the tracer slows the whole machine.
void countCalls(const Lanes& lanes, const Plan& plan)
{
    say("System calls (two minutes) ...");
    for (const auto& lane : lanes) {
        lane->trace();
        for (int i = 0; i < plan.tracedEvents; ++i) {
            lane->drain();
            std::this_thread::sleep_for(spacing);
        }
        lane->endTrace(plan.tracedEvents);
    }
}

void measureHolding(const Lanes& lanes, const Plan& plan)
{
    for (const auto& lane : lanes) lane->hold();
    std::this_thread::sleep_for(settling);
    say("Holding on mains (ten minutes) ...");
    for (const auto& lane : lanes) lane->watch();
    for (const auto end = Clock::now() + plan.holding; Clock::now() < end;) {
        std::this_thread::sleep_for(1s);
        for (const auto& lane : lanes) lane->noticeWakeUps();
    }
    for (const auto& lane : lanes) lane->rest();
}

/// Milliseconds from the start of a command to its end, the middle of many; what it prints goes nowhere.
/// Nothing where it fails.
std::optional<double> commandTime(std::vector<std::string> words, int runs)
{
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        pid_t process = -1;
        int status = -1;
        const auto begun = Clock::now();
        if (posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) break;
        if (waitpid(process, &status, 0) != process || status != 0) break;
        times.push_back(Milliseconds(Clock::now() - begun).count());
    }
    posix_spawn_file_actions_destroy(&actions);
    return times.empty() ? std::nullopt : std::optional(quantile(times, 0.5));
}

/// What a person types to see the battery, beside daemons that run.
void measureCommands(const std::string& bin, const Plan& plan)
{
    say("Commands ...");
    const auto ours = commandTime({bin + "/velmoractl", "status"}, plan.quietEvents);
    const auto theirs = commandTime({"/usr/bin/upower", "-i", "/org/freedesktop/UPower/devices/battery_BAT0"},
                                    plan.quietEvents);
    print({"velmoractl status; upower -i, p50", "ms", ours, theirs, std::nullopt, std::nullopt, 1});
    const auto* const tlpStat = std::getenv("VELMORA_TLP_STAT"); // no daemon: it reads the files itself
    const auto read = tlpStat ? commandTime({tlpStat, "-b"}, plan.quietEvents) : std::nullopt;
    print({"velmoractl status; tlp-stat -b, p50", "ms", ours, read, std::nullopt, std::nullopt, 1});
}

void report(const Lanes& lanes)
{
    const auto row = [&](const std::string& what, const char* unit, std::optional<double> aim, int decimals,
                         auto figure) {
        const auto of = [&](const char* title) -> std::optional<double> {
            const auto found = std::ranges::find_if(
                lanes, [&](const auto& lane) { return lane->contender().program.title == title; });
            return found == lanes.end() ? std::nullopt : std::optional<double>(figure((*found)->costs()));
        };
        print({what, unit, of("velmorad"), of("upowerd"), of("bare_loop"), aim, decimals});
    };
    const auto calls = [&](const char* title) -> std::optional<double> {
        for (const auto& lane : lanes)
            if (lane->contender().program.title == title) return lane->costs().calls;
        return std::nullopt;
    };
    row("change signal to push, p50", "ms", 0.8, 2,
        [](const Costs& c) { return quantile(c.latencies, 0.5); });
    row("change signal to push, p90", "ms", 0.8, 2,
        [](const Costs& c) { return quantile(c.latencies, 0.9); });
    row("processor time an event, second look and sample with it", "ms", 0.8, 2,
        [](const Costs& c) { return c.processorTime; });
    row("processor time an event, without them", "ms", 0.5, 2, [](const Costs& c) { return c.quietTime; });
    print({"system calls an event, second look and sample with it (velmorad: at most 60)", "",
           calls("velmorad"), calls("upowerd"), calls("bare_loop"), std::nullopt, 0});
    row("start to first answer", "ms", 0.5, 1, [](const Costs& c) { return quantile(c.starts, 0.5); });
    row("private memory", "kB", 0.6, 0, [](const Costs& c) { return c.memory.ownKilobytes; });
    row("proportional memory (PSS)", "kB", 0.6, 0,
        [](const Costs& c) { return c.memory.proportionalKilobytes; });
    row("wake-ups in ten minutes of holding (velmorad: at most 2)", "", std::nullopt, 0,
        [](const Costs& c) { return c.moments; });
    row("the same, each thread counted", "", std::nullopt, 0, [](const Costs& c) { return c.wakeUps; });
}

void run(const std::string& bin, const Plan& plan)
{
    const TemporaryFolder folder;
    const PrivateBus privateBus;
    sd_bus* opened = nullptr;
    check(sd_bus_open_system(&opened));
    const dbus::Bus bus(opened);
    Lanes lanes;
    lanes.push_back(std::make_unique<Lane>(velmorad(bin, folder.path()), opened, folder.path()));
    if (const std::string peer = "/usr/libexec/upowerd"; std::filesystem::exists(peer))
        lanes.push_back(std::make_unique<Lane>(upowerd(peer, folder.path()), opened, folder.path()));
    lanes.push_back(std::make_unique<Lane>(bareLoop(bin), opened, folder.path()));
    measureStarts(lanes, plan);
    measureCommands(bin, plan);
    measureEvents(lanes, plan);
    countCalls(lanes, plan);
    measureHolding(lanes, plan);
    report(lanes);
}

} // namespace

} // namespace velmora

int main(int argc, char** argv)
try {
    const bool isShort = argc == 3 && std::string_view(argv[2]) == "--short";
    if (argc != 2 && !isShort) {
        std::fprintf(stderr, "usage: umockdev-wrapper bench_daemon FOLDER-OF-PROGRAMS [--short]\n");
        return 2;
    }
    velmora::run(argv[1], isShort ? velmora::shortPlan : velmora::Plan{});
    return 0;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "bench_daemon: %s\n", failure.what());
    return 1;
}
