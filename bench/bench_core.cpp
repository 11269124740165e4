// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// What the core costs by itself, each beside the bare thing that it cannot do without.

#include "FakePlatform.h"
#include "FullHistory.h"
#include "Table.h"
#include "model/BatteryModel.h"
#include "state/HistoryStore.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <stdexcept>
#include <unistd.h>

namespace velmora {

namespace {

/// The daemon's store with all the samples that it keeps, in its file too.
struct FullStore {
    FakePlatform platform;
    std::filesystem::path file = platform.folder.path() / "history.json";
    std::string bytes = encodeHistory(fullHistory());
    HistoryStore store{file, *platform.clock, *platform.log};

    FullStore()
    {
        if (!store.save(bytes)) throw std::runtime_error("no history to read");
        store.load();
    }
};

void historyLoad(benchmark::State& state)
{
    FullStore full;
    for (auto _ : state) full.store.load();
}
BENCHMARK(historyLoad);

void bareRead(benchmark::State& state)
{
    const FullStore full;
    std::string bytes(full.bytes.size(), '\0');
    for (auto _ : state) {
        std::ifstream(full.file, std::ios::binary)
            .read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        benchmark::DoNotOptimize(bytes.data());
    }
}
BENCHMARK(bareRead);

void historySave(benchmark::State& state)
{
    FullStore full;
    for (auto _ : state) full.store.save(full.store.encoded());
}
BENCHMARK(historySave)->UseRealTime();

void bareWrite(benchmark::State& state)
{
    const FullStore full;
    for (auto _ : state) {
        const int fd = open(full.file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (write(fd, full.bytes.data(), full.bytes.size()) < 0 || fsync(fd) != 0)
            state.SkipWithError("no write");
        close(fd);
    }
}
BENCHMARK(bareWrite)->UseRealTime();

/// A level that the daemon pushed reaches those who watch the model's.
void modelAssignment(benchmark::State& state)
{
    FakePlatform platform;
    BatteryModel model(nullptr, nullptr);
    double sum = 0;
    std::vector<Subscription> watching;
    for (int i = 0; i < state.range(0); ++i)
        watching.push_back(model.percentage.observe([&sum](double level) { sum += level; }));
    double level = 0;
    for (auto _ : state) model.percentage.set(++level);
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(modelAssignment)->Arg(1)->Arg(20);

void bareCalls(benchmark::State& state)
{
    double sum = 0;
    std::vector<std::function<void(const double&)>> watching;
    for (int i = 0; i < state.range(0); ++i) watching.emplace_back([&sum](double level) { sum += level; });
    double level = 0;
    for (auto _ : state) {
        ++level;
        for (const auto& watcher : watching) watcher(level);
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(bareCalls)->Arg(1)->Arg(20);

/// Keeps the time of each benchmark instead of printing it.
class Collector final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const auto& run : runs) {
            if (run.error_occurred) throw std::runtime_error(run.benchmark_name() + ": " + run.error_message);
            nanoseconds_[run.benchmark_name()] = run.GetAdjustedRealTime();
        }
    }

    /// One row of the table; `scale` is the row's unit in nanoseconds.
    void printRow(const std::string& what, const std::string& unit, double scale, const std::string& mine,
                  const std::string& floor) const
    {
        print({what, unit, nanoseconds_.at(mine) / scale, {}, nanoseconds_.at(floor) / scale});
    }

private:
    std::map<std::string, double> nanoseconds_;
};

void run()
{
    Collector collected;
    benchmark::RunSpecifiedBenchmarks(&collected);
    collected.printRow("history of 1,000 samples: load; floor: read its bytes", "ms", 1e6, "historyLoad",
                       "bareRead");
    collected.printRow("history of 1,000 samples: save; floor: write and sync its bytes", "ms", 1e6,
                       "historySave/real_time", "bareWrite/real_time");
    collected.printRow("model assignment, 1 observer; floor: the bare call", "ns", 1, "modelAssignment/1",
                       "bareCalls/1");
    collected.printRow("model assignment, 20 observers; floor: the bare calls", "ns", 1, "modelAssignment/20",
                       "bareCalls/20");
}

} // namespace

} // namespace velmora

int main(int argc, char** argv)
try {
    benchmark::Initialize(&argc, argv);
    velmora::run();
    return 0;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "bench_core: %s\n", failure.what());
    return 1;
}
