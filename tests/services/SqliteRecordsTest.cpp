// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ManualLoop.h"
#include "RecordingLog.h"
#include "StoreRequests.h"
#include "TemporaryFolder.h"
#include "records/LinuxRecordStores.h"

#include <array>
#include <cmath>
#include <csignal>
#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace velmora {
namespace {

using Fields = CloudRecord::Fields;
using testing::ElementsAre;
using testing::StartsWith;

/// Stores in a file of the test's own, by the module as it was built.
struct SqliteRecordsTest : testing::Test {
    TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "Velmora" / "cloud.db";
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    std::shared_ptr<ManualLoop> loop = std::make_shared<ManualLoop>();
    LinuxRecordStores stores{
        {.folders = {folder.path(), VELMORA_BIN "/../lib/velmora"}, .file = file}, loop, log};

    std::shared_ptr<CloudDatabase> open() { return stores.open({}, nullptr); }

    std::string saved(CloudDatabase& store) { return problem(save(store, "a", {{"percentage", 1.0}})); }

    void execute(const char* statements) const
    {
        sqlite3* database = nullptr;
        sqlite3_open(file.c_str(), &database);
        EXPECT_EQ(sqlite3_exec(database, statements, nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(database);
        sqlite3_close(database);
    }

    std::string tested() { return velmora::tested(stores, *loop, {}, nullptr); }

    std::size_t filesWith(std::string_view part) const
    {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(file.parent_path()))
            count += entry.path().filename().string().find(part) != std::string::npos;
        return count;
    }
};

TEST_F(SqliteRecordsTest, MergesWhatWasSetAndListsInTheOrderOfCreation)
{
    const auto store = open();
    const Date when = Date::fromUnix(1'795'000'000.123456);
    const Fields first{{"percentage", 80.1}, {"isCharging", true}, {"deviceName", "caf\u00e9 \"1\""}};
    EXPECT_EQ(problem(save(*store, "b", first)), "");
    EXPECT_EQ(problem(save(*store, "a", {{"odd", "a\xff" + std::string(1, '\0') + "b"}, {"not", NAN}})), "");
    EXPECT_EQ(problem(save(*store, "c", {}, "Another")), "");
    EXPECT_EQ(
        problem(save(*store, "b", {{"isCharging", false}, {"lastUpdate", when}, {"percentage", INFINITY}})),
        "");
    const auto nothing = fetch(*store, "d");
    EXPECT_EQ(std::get<CloudError>(nothing).code, CloudError::Code::notFound);
    const Fields merged{
        {"percentage", 80.1}, {"isCharging", false}, {"deviceName", "caf\u00e9 \"1\""}, {"lastUpdate", when}};
    EXPECT_EQ(fieldsOf(*store, "b"), merged);
    EXPECT_EQ(fieldsOf(*open(), "a"), (Fields{{"odd", "a\ufffdb"}})) << "by another who has it open";

    execute("INSERT INTO record(type, name, fields) VALUES('DeviceStatus', 'list', '[1]')");
    EXPECT_EQ(problem(save(*store, "z", {})), "");
    EXPECT_THAT(listed(*store), ElementsAre("b", "a", "?", "z"));
    EXPECT_THAT(listed(*store, 2), ElementsAre("b", "a"));
    EXPECT_EQ(problem(remove(*store, "b")) + problem(remove(*store, "b")), "");
    EXPECT_THAT(listed(*store, 2), ElementsAre("a", "?"));
    const auto unreadable = fetch(*store, "list");
    EXPECT_EQ(std::get<CloudError>(unreadable).code, CloudError::Code::unreadable);

    struct stat found {};
    ASSERT_EQ(stat(file.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777, 0600U);
    stat(file.parent_path().c_str(), &found);
    EXPECT_EQ(found.st_mode & 0777, 0700U);
    EXPECT_EQ(log->count(), 0U);
}

TEST_F(SqliteRecordsTest, TwoProgramsLoseNoFieldOfEachOther)
{
    constexpr int saves = 100;
    const auto saveAll = [this](const std::string& prefix) {
        const auto store = open();
        int failed = 0;
        for (int i = 0; i < saves; ++i)
            if (const auto error = save(*store, "shared", {{prefix + std::to_string(i), 1.0}})) {
                ++failed;
                ADD_FAILURE() << prefix << i << problem(error);
            }
        return failed;
    };
    const pid_t other = fork();
    if (other == 0) _exit(saveAll("theirs"));
    EXPECT_EQ(saveAll("ours"), 0);
    int status = -1;
    waitpid(other, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(fieldsOf(*open(), "shared").size(), 2U * saves);
}

TEST_F(SqliteRecordsTest, WhatWasAcknowledgedOutlivesAProgramThatIsKilledInMidSave)
{
    std::vector<std::string> lasts;
    for (int round = 0; round < 5; ++round) {
        std::array<int, 2> acknowledged{};
        ASSERT_EQ(pipe(acknowledged.data()), 0);
        const auto name = [round](std::size_t i) { return std::to_string(round) + "." + std::to_string(i); };
        const pid_t other = fork(); // no store is open here, and so no thread that would be cut off
        if (other == 0) {
            const auto store = open();
            for (std::size_t i = 0;; ++i) // a byte for each save that is done
                if (save(*store, name(i), {{"i", 1.0}}) || write(acknowledged[1], "x", 1) != 1) _exit(1);
        }
        close(acknowledged[1]);
        std::size_t done = 0;
        for (char one = 0; read(acknowledged[0], &one, 1) == 1;)
            if (++done == 30) kill(other, SIGKILL);
        close(acknowledged[0]);
        int status = 0;
        waitpid(other, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "a save failed";
        lasts.push_back(name(done - 1));
    }
    const auto store = open();
    for (const auto& last : lasts) EXPECT_EQ(fieldsOf(*store, last).size(), 1U) << last;
    EXPECT_EQ(saved(*store), "");
    EXPECT_EQ(log->count(), 0U);
}

TEST_F(SqliteRecordsTest, AFileThatIsNotTheUsersAloneIsNotTouched)
{
    folder.write("Velmora/theirs", "precious");
    const auto store = open();
    std::filesystem::create_symlink("theirs", file);
    EXPECT_THAT(saved(*store), StartsWith("file: " + file.string() + " is a link"));
    EXPECT_THAT(tested(), StartsWith("file: "));
    std::filesystem::remove(file);
    std::filesystem::create_hard_link(file.parent_path() / "theirs", file);
    EXPECT_THAT(saved(*store), StartsWith("file: "));
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_THAT(saved(*store), StartsWith("file: "));
    EXPECT_EQ(folder.read("Velmora/theirs"), "precious");
    std::filesystem::remove(file);
    if (geteuid() == 0) {
        folder.write("Velmora/cloud.db", "");
        ASSERT_EQ(chown(file.c_str(), 65534, 65534), 0);
        EXPECT_THAT(saved(*store), testing::HasSubstr("belongs to another user"));
        std::filesystem::remove(file);
    }
    EXPECT_EQ(saved(*store), "") << "its place is free again";
    EXPECT_EQ(tested(), ": ");
    EXPECT_THAT(listed(*store), ElementsAre("a"));
    LinuxRecordStores homeless({.folders = {VELMORA_BIN "/../lib/velmora"}, .file = {}}, loop, log);
    EXPECT_THAT(saved(*homeless.open({}, nullptr)), testing::HasSubstr("HOME is not set"));
}

TEST_F(SqliteRecordsTest, ADamagedFileIsSetAsideAndANewOneBegun)
{
    folder.write("Velmora/cloud.db", "this is no database, whatever its name says");
    EXPECT_EQ(saved(*open()), "");
    EXPECT_EQ(filesWith("cloud.db.broken-"), 1U);
    EXPECT_EQ(log->count("is damaged"), 1U);

    const auto store = open();
    for (int i = 0; i < 200; ++i)
        save(*store, "n" + std::to_string(i), {{"deviceName", std::string(200, 'x')}});
    execute("PRAGMA wal_checkpoint(TRUNCATE)");
    {
        std::fstream damage(file, std::ios::in | std::ios::out | std::ios::binary);
        damage.seekp(4096);
        damage << std::string(40'000, '\x55');
    }
    EXPECT_THAT(listed(*open()), ElementsAre()) << "what was there is gone, and said to be";
    EXPECT_EQ(log->count("is damaged"), 2U);
    const auto third = open();
    EXPECT_EQ(saved(*third), "");
    std::filesystem::remove(file);
    EXPECT_EQ(saved(*third), "") << "which somebody has deleted meanwhile";
    EXPECT_THAT(listed(*open()), ElementsAre("a"));

    std::filesystem::remove(file);
    execute("CREATE TABLE record(something)");
    EXPECT_EQ(saved(*open()), "") << "that file was somebody else's";
    EXPECT_EQ(filesWith("cloud.db.broken-3"), 1U);
}

TEST_F(SqliteRecordsTest, AFileThatIsLockedForLongFailsInTimeAndIsReadAllTheWhile)
{
    const auto store = open();
    ASSERT_EQ(saved(*store), "");
    sqlite3* other = nullptr;
    sqlite3_open(file.c_str(), &other);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_THAT(saved(*store), StartsWith("slow: "));
    EXPECT_THAT(listed(*store), ElementsAre("a"));
    sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(other);
    EXPECT_EQ(saved(*store), "");
}

/// A small file system, which only root may have mounted.
TEST_F(SqliteRecordsTest, AFullOrReadOnlyDiskIsNamedAndOverOnceItIs)
{
    std::filesystem::create_directory(file.parent_path());
    const auto at = file.parent_path().string();
    if (mount("none", at.c_str(), "tmpfs", 0, "size=300k") != 0) GTEST_SKIP() << "only root can mount";
    {
        const auto store = open();
        std::string answer;
        for (int i = 0; i < 200 && answer.empty(); ++i)
            answer = problem(save(*store, std::to_string(i), {{"deviceName", std::string(10'000, 'x')}}));
        EXPECT_THAT(answer, StartsWith("full: "));
        EXPECT_FALSE(fieldsOf(*store, "0").empty()) << "what was acknowledged is there";
    }
    EXPECT_EQ(mount("none", at.c_str(), "tmpfs", MS_REMOUNT, "size=3m"), 0);
    EXPECT_EQ(saved(*open()), "");
    EXPECT_EQ(umount2(at.c_str(), MNT_DETACH), 0);
    ASSERT_EQ(mount("none", at.c_str(), "tmpfs", MS_RDONLY, ""), 0);
    EXPECT_THAT(saved(*open()), StartsWith("file: "));
    umount2(at.c_str(), MNT_DETACH);
}

TEST_F(SqliteRecordsTest, AModuleThatCannotBeUsedIsNamedOnceWithThePackageThatHasIt)
{
    const RecordPlace server{.kind = RecordPlace::Kind::server, .host = "example.org", .user = "me"};
    LinuxRecordStores none({.folders = {folder.path()}, .file = file}, loop, log);
    EXPECT_EQ(none.open(server, nullptr), nullptr);
    EXPECT_EQ(none.open(server, nullptr), nullptr);
    EXPECT_EQ(log->count("package velmora-postgresql"), 1U);

    folder.write("velmora-sqlite.so", "not a library");
    EXPECT_EQ(none.open({}, nullptr), nullptr);
    EXPECT_EQ(log->count("Could not load"), 1U);
    EXPECT_EQ(saved(*open()), "") << "the next folder has one";

    std::filesystem::copy_file(std::filesystem::path(VELMORA_BIN) / "other-version.so",
                               folder.path() / "velmora-postgresql.so");
    EXPECT_EQ(none.open(server, nullptr), nullptr);
    EXPECT_EQ(log->count("is of Velmora 0.0.1, this program of"), 1U);
    std::optional<RecordFault> fault;
    none.test(server, nullptr, [&](RecordFault found, const auto&) { fault = found; });
    loop->runPosted();
    EXPECT_EQ(fault, RecordFault::noModule);
}

} // namespace
} // namespace velmora
