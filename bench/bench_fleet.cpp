// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// What the records of a fleet cost, in SQLite and on a PostgreSQL server of the bench's own: the ticks of
// machines, their saves, and many of them that come at once. Beside each figure stand the bare statements.

#include "BareStores.h"
#include "PostgresServer.h"
#include "StoreRequests.h"
#include "Table.h"
#include "TemporaryFolder.h"
#include "base/EventLoop.h"
#include "base/JournalLog.h"
#include "records/LinuxRecordStores.h"
#include "records/RecordCodec.h"
#include "records/ServerVariables.h"

#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <fstream>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace velmora {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int fleets[] = {10, 1'000, 100'000};
constexpr auto ownName = "DeviceStatus_00000000-0000-4000-8000-000000000005";

CloudRecord upload()
{
    CloudRecord record("DeviceStatus", ownName);
    record.set("percentage", 79.0);
    record.set("isCharging", false);
    record.set("thermalState", "Nominal");
    record.set("deviceName", "a laptop of the bench");
    record.set("lastUpdate", Date::fromUnix(static_cast<double>(std::time(nullptr))));
    return record;
}

/// All that a machine's record ever has.
std::string fullFields()
{
    auto record = upload();
    for (const char* name : {"remoteChargeLimit", "limitInForce"}) record.set(name, 80.0);
    for (const char* name : {"remoteAppleMode", "isStorageModeEnabled", "autoProtectInForce",
                             "storageModeInForce", "acceptsCommands"})
        record.set(name, true);
    for (const char* name : {"commandTimestamp", "commandTaken"}) record.set(name, Date{816'000'000.5});
    record.set("commandOrigin", "another (00000000-0000-4000-8000-000000000006)");
    return record_codec::encode(record.fields()).value();
}

std::string withCommas(int number)
{
    auto text = std::to_string(number);
    for (std::size_t end = text.size(); end > 3; end -= 3) text.insert(end - 3, ",");
    return text;
}

void require(const std::optional<CloudError>& error)
{
    if (error) throw std::runtime_error(problem(error));
}

template <typename T>
void require(const CloudResult<T>& result)
{
    if (const auto* error = std::get_if<CloudError>(&result)) throw std::runtime_error(problem(*error));
}

/// A machine's minute: it uploads its state, looks for commands, and lists the others.
void tick(CloudDatabase& store)
{
    require(fetch(store, ownName));
    require(awaited<std::optional<CloudError>>([&](auto done) { store.save(upload(), done); }));
    require(fetch(store, ownName));
    require(awaited<CloudResult<CloudDatabase::Listing>>(
        [&](auto queried) { store.query("DeviceStatus", CloudDatabase::maximumResults, queried); }));
}

void tick(BareStore& store, const std::string& fields)
{
    store.fetch(ownName);
    store.save(ownName, fields);
    store.fetch(ownName);
    store.list();
}

template <typename Act>
double milliseconds(Act act)
{
    const auto begun = Clock::now();
    act();
    return std::chrono::duration<double, std::milli>(Clock::now() - begun).count();
}

/// The medians of both, which take turns, so that a busy moment of the machine meets both.
template <typename Mine, typename Bare>
void printTurns(const std::string& what, int rounds, Mine mine, Bare bare)
{
    std::vector<double> ours, floor;
    for (int i = 0; i < rounds; ++i) {
        ours.push_back(milliseconds(mine));
        floor.push_back(milliseconds(bare));
    }
    const double our = quantile(ours, 0.5), least = quantile(floor, 0.5);
    printLine(what, "ms", {figure(our, 3), figure(least, 3), figure(our / least, 2)});
}

/// How often a second, by as many at once, for a while.
double rate(int writers, const std::function<std::function<void()>(int)>& make)
{
    constexpr auto time = std::chrono::seconds{2};
    std::vector<std::function<void()>> acts;
    for (int i = 0; i < writers; ++i) acts.push_back(make(i));
    std::atomic<int> done = 0;
    const auto begun = Clock::now();
    std::vector<std::thread> threads;
    for (const auto& act : acts)
        threads.emplace_back([&] {
            for (; Clock::now() - begun < time; ++done) act();
        });
    for (auto& thread : threads) thread.join();
    return done / std::chrono::duration<double>(Clock::now() - begun).count();
}

/// Saves of each writer into a record of its own, through the store and bare.
void printSaves(const std::string& what, int writers,
                const std::function<std::shared_ptr<CloudDatabase>()>& open,
                const std::function<std::shared_ptr<BareStore>()>& openBare)
{
    const auto fields = record_codec::encode(upload().changes()).value();
    const double mine = rate(writers, [&](int i) -> std::function<void()> {
        return [store = open(), name = "Saves_" + std::to_string(i)] {
            require(save(*store, name, upload().changes()));
        };
    });
    const double bare = rate(writers, [&](int i) -> std::function<void()> {
        return
            [store = openBare(), fields, name = "Saves_" + std::to_string(i)] { store->save(name, fields); };
    });
    printLine(what, "1/s", {figure(mine, 0), figure(bare, 0), figure(mine / bare, 2)});
}

void printHead(const char* store)
{
    std::printf("\n| %s | unit | Velmora | bare statements | ratio |\n|---|---|--:|--:|--:|\n", store);
}

// -- SQLite

void benchSqlite(const std::filesystem::path& modules)
{
    const auto loop = std::make_shared<EventLoop>();
    const auto log = std::make_shared<JournalLog>("bench_fleet", JournalLog::Sink::standardError);
    const auto fields = record_codec::encode(upload().changes()).value();
    printHead("SQLite");
    for (const int size : fleets) {
        const TemporaryFolder folder;
        const auto file = folder.path() / "cloud.db";
        LinuxRecordStores stores({.folders = {modules}, .file = file}, loop, log);
        const auto store = stores.open({}, nullptr);
        require(save(*store, ownName, upload().changes()));
        BareSqlite bare(file);
        bare.execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                     std::to_string(size - 1) +
                     ") INSERT INTO record(type, name, fields) SELECT 'DeviceStatus', "
                     "'DeviceStatus_10000000-0000-4000-8000-' || printf('%012d', i), '" +
                     fullFields() + "' FROM n");
        printTurns(
            "a tick in a fleet of " + withCommas(size), 300, [&] { tick(*store); },
            [&] { tick(bare, fields); });
        if (size != 1'000) continue;
        for (const int writers : {1, 8})
            printSaves(
                "saves by " + std::to_string(writers) + (writers == 1 ? " program" : " programs at once"),
                writers, [&] { return stores.open({}, nullptr); },
                [&] { return std::make_shared<BareSqlite>(file); });
    }
}

// -- PostgreSQL

class ServerBench {
public:
    explicit ServerBench(const std::filesystem::path& bin);
    void run();

private:
    void administer(const std::string& arguments) const;
    void fill(int size) const;
    std::shared_ptr<CloudDatabase> open(const std::string& user);
    std::shared_ptr<BareStore> openBare(const std::string& user) const;
    double processorSeconds() const;
    void printServerTime();
    void printCrowd(int machines, int connections);

    std::filesystem::path bin_;
    TemporaryFolder folder_;
    PostgresServer server_;
    LinuxRecordStores stores_;
};

std::string ownerOf(int size)
{
    return "fleet" + std::to_string(size);
}

ServerBench::ServerBench(const std::filesystem::path& bin)
    : bin_(bin),
      stores_({.folders = {bin / ".." / "lib" / "velmora"}, .file = {}}, std::make_shared<EventLoop>(),
              std::make_shared<JournalLog>("bench_fleet", JournalLog::Sink::standardError))
{
    folder_.write("password", "bench\n");
    std::filesystem::permissions(folder_.path() / "password", std::filesystem::perms{0600});
    administer("setup");
    for (const int size : fleets) {
        administer("add " + ownerOf(size) + " --password-file " + (folder_.path() / "password").string());
        fill(size);
    }
    server_.sql("VACUUM ANALYZE velmora.record; CHECKPOINT");
}

void ServerBench::administer(const std::string& arguments) const
{
    const auto command = (bin_ / "velmora-fleet-server").string() + " " + arguments + " --host " +
                         server_.folder() + " --port " + std::to_string(server_.port()) + " >&2";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("velmora-fleet-server failed");
}

void ServerBench::fill(int size) const
{
    const auto said = server_.sql(
        "INSERT INTO velmora.record(owner, type, name, fields) SELECT '" + ownerOf(size) +
        "', 'DeviceStatus', 'DeviceStatus_00000000-0000-4000-8000-' || lpad(i::text, 12, '0'), '" +
        fullFields() + "' FROM generate_series(1, " + std::to_string(size) + ") i");
    if (!said.empty()) throw std::runtime_error(said);
}

std::shared_ptr<CloudDatabase> ServerBench::open(const std::string& user)
{
    return stores_.open(
        {.kind = RecordPlace::Kind::server, .host = "127.0.0.1", .port = server_.port(), .user = user},
        [] { return std::string("bench"); });
}

std::shared_ptr<BareStore> ServerBench::openBare(const std::string& user) const
{
    return std::make_shared<BarePostgres>(
        "host=127.0.0.1 sslmode=require channel_binding=require dbname=velmora "
        "password=bench port=" +
        std::to_string(server_.port()) + " user=" + user);
}

/// Of the server's processes so far, those that have ended included.
double ServerBench::processorSeconds() const
{
    std::ifstream pid(std::filesystem::path(server_.folder()) / "data" / "postmaster.pid");
    std::string number, word;
    pid >> number;
    std::ifstream stat("/proc/" + number + "/stat");
    constexpr int userTime = 14, last = 17; // with its system time, and both of the children that have ended
    double ticks = 0;
    for (int field = 1; field <= last && stat >> word; ++field)
        if (field >= userTime) ticks += std::stod(word);
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

/// What a server has to spend on one machine's minute, told by its processes once they have ended.
void ServerBench::printServerTime()
{
    constexpr int ticks = 300;
    const auto perTick = [this](auto act) {
        std::this_thread::sleep_for(std::chrono::seconds{1}); // until what was before has ended
        const double before = processorSeconds();
        act();
        std::this_thread::sleep_for(std::chrono::milliseconds{300});
        return (processorSeconds() - before) * 1'000 / ticks;
    };
    const double open1 = perTick([this] {
        const auto store = open(ownerOf(1'000));
        for (int i = 0; i < ticks; ++i) tick(*store);
    });
    const double anew = perTick([this] {
        for (int i = 0; i < ticks; ++i) tick(*open(ownerOf(1'000)));
    });
    printLine("the server's processor time for a tick", "ms", {figure(open1, 2), "–", "–"});
    printLine("the same, connecting for each", "ms", {figure(anew, 2), "–", "–"});
}

/// Machines that all connect at the same moment, as after a power cut, and those that were refused once more,
/// when the connections of the others have come to rest.
void ServerBench::printCrowd(int machines, int connections)
{
    server_.start("-c max_connections=" + std::to_string(connections));
    std::vector<std::shared_ptr<CloudDatabase>> crowd;
    for (int i = 0; i < machines; ++i) crowd.push_back(open(ownerOf(1'000)));
    std::vector<std::string> cells;
    for (int attempt = 0; attempt < 2; ++attempt) {
        std::vector<std::promise<bool>> answers(crowd.size());
        std::vector<std::shared_ptr<CloudDatabase>> refused;
        const double time = milliseconds([&] {
            for (std::size_t i = 0; i < crowd.size(); ++i)
                crowd[i]->query("DeviceStatus", 200, [&answer = answers[i]](const auto& result) {
                    answer.set_value(std::holds_alternative<CloudDatabase::Listing>(result));
                });
            for (std::size_t i = 0; i < crowd.size(); ++i)
                if (!answers[i].get_future().get()) refused.push_back(crowd[i]);
        });
        cells.push_back(std::to_string(crowd.size() - refused.size()));
        cells.push_back(figure(time / 1'000, 1));
        crowd = refused;
        if (attempt == 0) std::this_thread::sleep_for(std::chrono::seconds{4});
    }
    printLine(std::to_string(machines), std::to_string(connections), cells);
}

void ServerBench::run()
{
    const auto fields = record_codec::encode(upload().changes()).value();
    printHead("PostgreSQL, TLS");
    for (const int size : fleets) {
        const auto store = open(ownerOf(size));
        const auto bare = openBare(ownerOf(size));
        printTurns(
            "a tick in a fleet of " + withCommas(size), 200, [&] { tick(*store); },
            [&] { tick(*bare, fields); });
    }
    const auto user = ownerOf(1'000);
    printTurns(
        "the same of 1,000, connecting for it", 50, [&] { tick(*open(user)); },
        [&] { tick(*openBare(user), fields); });
    for (const int writers : {1, 8, 64})
        printSaves(
            "saves by " + std::to_string(writers) + (writers == 1 ? " machine" : " machines at once"),
            writers, [&] { return open(user); }, [&] { return openBare(user); });
    printServerTime();
    const auto bytes =
        server_.sql("SELECT pg_total_relation_size('velmora.record') / count(*) FROM velmora.record");
    printLine("a record in the table and its indexes, beside its bare text", "bytes",
              {bytes, std::to_string(fullFields().size()), "–"});
    std::puts(
        "\n| machines at once | connections | answered | after, s | answered at the second try | after, s "
        "|\n|--:|--:|--:|--:|--:|--:|");
    for (const auto& [machines, connections] : {std::pair{50, 100}, {400, 100}, {400, 500}})
        printCrowd(machines, connections);
}

} // namespace

} // namespace velmora

int main(int argc, char** argv)
try {
    if (argc != 2) throw std::runtime_error("which folder has the programs?");
    const std::filesystem::path bin = argv[1];
    velmora::forgetServerVariables();
    velmora::benchSqlite(bin / ".." / "lib" / "velmora");
    if (velmora::PostgresServer::isInstalled()) velmora::ServerBench(bin).run();
    return 0;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "bench_fleet: %s\n", failure.what());
    return 1;
}
