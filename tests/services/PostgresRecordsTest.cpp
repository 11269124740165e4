// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ManualLoop.h"
#include "PostgresServer.h"
#include "RecordingLog.h"
#include "StoreRequests.h"
#include "TemporaryFolder.h"
#include "records/LinuxRecordStores.h"
#include "records/ServerVariables.h"

#include <atomic>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace velmora {
namespace {

const std::string modules = std::string(VELMORA_BIN) + "/../lib/velmora";

/// A server that velmora-fleet-server has set up for alice and bob, and stores on it by the module as it was
/// built.
struct PostgresRecordsTest : testing::Test {
    TemporaryFolder folder;
    std::optional<PostgresServer> server;
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    std::shared_ptr<ManualLoop> time = std::make_shared<ManualLoop>();
    LinuxRecordStores stores{{.folders = {modules}, .file = {}}, time, log};

    void SetUp() override
    {
        if (!PostgresServer::isInstalled()) GTEST_SKIP() << "PostgreSQL is not installed.";
        server.emplace();
        ASSERT_EQ(administer("setup"), 0) << said;
        ASSERT_EQ(administer("add alice --password-file " + secret("alice", "alice-pw")), 0) << said;
        ASSERT_EQ(administer("add bob --password-file " + secret("bob", "bob-pw")), 0) << said;
    }

    std::string said; ///< what velmora-fleet-server printed last

    int administer(const std::string& arguments)
    {
        const auto output = folder.path() / "said";
        const auto command = std::string(VELMORA_BIN) + "/velmora-fleet-server " + arguments + " --host " +
                             server->folder() + " --port " + std::to_string(server->port()) + " >" +
                             output.string() + " 2>&1";
        const int status = std::system(command.c_str());
        said = folder.read("said");
        return WEXITSTATUS(status);
    }

    std::string secret(const std::string& name, const std::string& text, int mode = 0600) const
    {
        folder.write(name, text + "\n");
        std::filesystem::permissions(folder.path() / name, std::filesystem::perms(mode));
        return folder.path() / name;
    }

    RecordPlace place(const std::string& user = "alice") const
    {
        return {.kind = RecordPlace::Kind::server,
                .host = "127.0.0.1",
                .port = server ? server->port() : std::uint16_t{1},
                .user = user};
    }
    std::shared_ptr<CloudDatabase> open(const RecordPlace& where)
    {
        return stores.open(where, [user = where.user] { return user + "-pw"; });
    }

    /// What a person's test of the place says, the log's text behind it.
    std::string tested(const RecordPlace& where, const std::string& password = "alice-pw")
    {
        std::optional<std::string> result;
        stores.test(
            where, [password] { return password; },
            [&](RecordFault fault, const std::string& detail) {
                result = recordFaultTexts.at(static_cast<std::size_t>(fault)) + (": " + detail);
            });
        for (int i = 0; i < 3000 && !result; ++i) {
            time->runPosted();
            std::this_thread::sleep_for(std::chrono::milliseconds{10});
        }
        return result.value_or("no answer");
    }
    std::string faultOf(const RecordPlace& where, const std::string& password = "alice-pw")
    {
        const auto result = tested(where, password);
        return result.substr(0, result.find(':'));
    }
};

/// Whether it holds before long.
bool eventually(const std::function<bool()>& condition)
{
    for (int i = 0; i < 600; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds{50});
    }
    return false;
}

TEST_F(PostgresRecordsTest, MergesListsAndRemovesWhileTwoWritersLoseNothing)
{
    const auto store = open(place());
    EXPECT_EQ(problem(save(*store, "b", {{"percentage", 80.5}, {"lastUpdate", Date(3.25)}})), "");
    EXPECT_EQ(problem(save(*store, "a", {{"isCharging", true}})), "");
    EXPECT_EQ(problem(save(*store, "b", {{"deviceName", std::string("Schloß \"x\" '; --")}})), "");
    EXPECT_EQ(fieldsOf(*store, "b"),
              (CloudRecord::Fields{{"percentage", 80.5},
                                   {"lastUpdate", Date(3.25)},
                                   {"deviceName", std::string("Schloß \"x\" '; --")}}));
    EXPECT_EQ(listed(*store), (std::vector<std::string>{"b", "a"})); // in order of creation
    EXPECT_EQ(listed(*store, 1), (std::vector<std::string>{"b"}));
    server->sql("UPDATE velmora.record SET fields = '{\"percentage\": [[1]]}' WHERE name = 'a'");
    EXPECT_EQ(fieldsOf(*store, "a"), CloudRecord::Fields());

    const auto write = [this](const std::string& field) {
        const auto own = open(place());
        for (int i = 1; i <= 100; ++i) save(*own, "both", {{field, double(i)}});
    };
    std::thread first(write, "mine"), second(write, "yours");
    first.join();
    second.join();
    EXPECT_EQ(fieldsOf(*store, "both"), (CloudRecord::Fields{{"mine", 100.0}, {"yours", 100.0}}));

    EXPECT_EQ(problem(remove(*store, "b")), "");
    EXPECT_EQ(problem(remove(*store, "b")), "");
    const auto gone = fetch(*store, "b");
    EXPECT_EQ(std::get<CloudError>(gone).code, CloudError::Code::notFound);
    EXPECT_EQ(tested(place()), ": ");
    EXPECT_EQ(server->sql("SELECT count(*) FROM velmora.record WHERE type = 'VelmoraTest'"), "0");
}

TEST_F(PostgresRecordsTest, PeopleCannotReachEachOthersRecordsByAnyStatement)
{
    const auto hers = open(place("alice"));
    const auto his = open(place("bob"));
    EXPECT_EQ(problem(save(*hers, "laptop", {{"percentage", 80.0}})), "");
    EXPECT_EQ(problem(save(*his, "laptop", {{"percentage", 20.0}})), ""); // the same name, another record
    EXPECT_EQ(listed(*his), (std::vector<std::string>{"laptop"}));

    const auto before = server->sql("SELECT owner, fields, version FROM velmora.record ORDER BY owner");
    const auto bob = [this](const std::string& statement) {
        return server->sqlAs("bob", "bob-pw", statement);
    };
    const auto alices = "WHERE owner = 'alice'";
    EXPECT_EQ(bob("SELECT count(*) FROM velmora.record"), "1");
    EXPECT_EQ(bob(std::string("DELETE FROM velmora.record ") + alices + " RETURNING name"), "");
    EXPECT_EQ(bob(std::string("UPDATE velmora.record SET fields = '{}' ") + alices + " RETURNING name"), "");
    for (const std::string refused :
         {"INSERT INTO velmora.record (owner, type, name) VALUES ('alice', 'DeviceStatus', 'x')",
          "UPDATE velmora.record SET owner = 'alice'", "SET ROLE alice", "SET SESSION AUTHORIZATION alice",
          "SET row_security = off; SELECT * FROM velmora.record", "COPY velmora.record TO PROGRAM 'cat'",
          "TRUNCATE velmora.record", "DROP TABLE velmora.record",
          "ALTER TABLE velmora.record DISABLE ROW LEVEL SECURITY",
          "DROP POLICY own_records ON velmora.record", "CREATE TABLE velmora.other (x int)",
          "CREATE TABLE public.other (x int)", "GRANT velmora_user TO alice", "ALTER ROLE bob SUPERUSER"})
        EXPECT_NE(bob(refused).find("ERROR"), std::string::npos) << refused;
    EXPECT_EQ(server->sql("SELECT owner, fields, version FROM velmora.record ORDER BY owner"), before);
}

TEST_F(PostgresRecordsTest, SaysWhatIsWrongWithAPlace)
{
    auto other = place();
    EXPECT_EQ(faultOf(other, "wrong"), "password");
    EXPECT_EQ(faultOf(other, ""), "no-password");
    other.database = "nothing";
    EXPECT_EQ(faultOf(other), "no-database");
    other.database = "postgres";
    EXPECT_EQ(faultOf(other), "no-table");
    other = place();
    other.host = "nowhere.invalid";
    EXPECT_THAT(faultOf(other), testing::AnyOf("unknown-host", "unreachable")); // without a network
    for (const std::string host : {"", "127.0.0.1,127.0.0.1", "@socket"}) {
        other.host = host;
        EXPECT_EQ(faultOf(other), "unknown-host");
    }
    other = place();
    other.trust = RecordPlace::Trust::certificate;
    EXPECT_EQ(faultOf(other), "certificate");
    EXPECT_EQ(faultOf(place("postgres"), "admin-pw"), "superuser");

    server->sql("GRANT CONNECT ON DATABASE velmora TO PUBLIC; CREATE ROLE eve LOGIN PASSWORD 'eve-pw'");
    EXPECT_EQ(faultOf(place("eve"), "eve-pw"), "no-rights");
    server->sql(
        "ALTER TABLE velmora.record NO FORCE ROW LEVEL SECURITY; ALTER TABLE velmora.record OWNER TO alice");
    EXPECT_EQ(faultOf(place()), "no-table"); // rows are not kept apart from their table's owner
    server->start("-c ssl=off");
    EXPECT_EQ(faultOf(place()), "no-encryption");
    server->kill();
    EXPECT_EQ(faultOf(place()), "no-server");
}

TEST_F(PostgresRecordsTest, TakesThePasswordFromTheFileThatWasChosenOrNotAtAll)
{
    auto chosen = place();
    chosen.passwordFile = secret("chosen", "alice-pw");
    EXPECT_EQ(faultOf(chosen, "another"), "");
    secret("chosen", "alice-pw", 0640);
    EXPECT_EQ(faultOf(chosen), "no-password"); // not even where one is kept elsewhere
    EXPECT_EQ(log->count("chosen: others may use it"), 1U);
    std::filesystem::create_symlink(secret("real", "alice-pw"), folder.path() / "link");
    chosen.passwordFile = folder.path() / "link";
    EXPECT_EQ(faultOf(chosen), "no-password");

    secret("velmora-fleet-password", "alice-pw");
    setenv("CREDENTIALS_DIRECTORY", folder.path().c_str(), 1);
    EXPECT_EQ(faultOf(place(), ""), "");
    EXPECT_EQ(faultOf(place(), "wrong"), "password"); // the one that is kept comes first
    unsetenv("CREDENTIALS_DIRECTORY");
}

TEST_F(PostgresRecordsTest, VariablesOfTheEnvironmentChangeNothing)
{
    for (const auto* variable : {"PGHOSTADDR=192.0.2.1", "PGOPTIONS=--nonsense", "PGSERVICE=none",
                                 "PGTARGETSESSIONATTRS=standby", "PGSSLMODE=disable", "PGPASSWORD=x"})
        putenv(const_cast<char*>(variable));
    setenv("XPG", "kept", 1);
    forgetServerVariables();
    EXPECT_STREQ(getenv("XPG"), "kept");
    EXPECT_EQ(getenv("PGOPTIONS"), nullptr);
    EXPECT_EQ(tested(place()), ": ");
}

TEST_F(PostgresRecordsTest, RecoversByItselfFromAKilledServerAndLosesNothingThatItAcknowledged)
{
    const auto store = open(place());
    std::atomic<bool> isEnough = false;
    std::atomic<int> acknowledged = 0;
    std::thread writer([&] {
        for (int i = 1; !isEnough; ++i)
            if (!save(*store, "laptop", {{"percentage", double(i)}})) acknowledged = i;
    });
    for (int round = 0; round < 2; ++round) {
        const int before = acknowledged;
        EXPECT_TRUE(eventually([&] { return acknowledged > before + 20; }));
        server->kill();
        const int kept = acknowledged;
        server->start();
        const auto stored = server->sql("SELECT fields->>'percentage' FROM velmora.record");
        EXPECT_GE(std::stod(stored), kept);
    }
    const int before = acknowledged;
    EXPECT_TRUE(eventually([&] { return acknowledged > before; }));
    isEnough = true;
    writer.join();

    // One that fails for a while fails in the same words, which are logged once.
    server->kill();
    const auto first = problem(save(*store, "laptop", {}));
    EXPECT_TRUE(first.starts_with("unreachable") || first.starts_with("no-server")) << first;
    const auto second = problem(save(*store, "laptop", {}));
    EXPECT_EQ(problem(save(*store, "laptop", {})), second);
}

TEST_F(PostgresRecordsTest, AFrozenServerHoldsUpNobody)
{
    const auto store = open(place());
    EXPECT_EQ(problem(save(*store, "laptop", {{"percentage", 1.0}})), "");
    auto ended = open(place());
    EXPECT_EQ(problem(save(*ended, "laptop", {{"percentage", 2.0}})), "");
    server->freeze();
    std::atomic<bool> isAnswered = false;
    ended->save(CloudRecord("DeviceStatus", "laptop"), [&](const auto&) { isAnswered = true; });
    ended.reset(); // waits for nothing, and nothing is answered any more
    EXPECT_EQ(problem(save(*store, "laptop", {{"percentage", 3.0}})),
              "slow: the server does not answer in time");
    EXPECT_EQ(faultOf(place()), "unreachable");
    server->thaw();
    EXPECT_FALSE(isAnswered);
    EXPECT_TRUE(eventually([&] { return !save(*store, "laptop", {{"percentage", 4.0}}); }));
    EXPECT_EQ(fieldsOf(*store, "laptop"), (CloudRecord::Fields{{"percentage", 4.0}}));
}

TEST_F(PostgresRecordsTest, AFullServerIsToldAndUsedAgainOnceItHasRoom)
{
    const auto store = open(place());
    server->sql("CREATE FUNCTION refuse() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN RAISE EXCEPTION "
                "'could not extend file' USING ERRCODE = 'disk_full'; END $$; "
                "CREATE TRIGGER refusal BEFORE INSERT ON velmora.record EXECUTE FUNCTION refuse()");
    EXPECT_THAT(problem(save(*store, "laptop", {{"percentage", 1.0}})), testing::StartsWith("full: "));
    EXPECT_EQ(listed(*store), std::vector<std::string>());
    server->sql("DROP TRIGGER refusal ON velmora.record");
    EXPECT_EQ(problem(save(*store, "laptop", {{"percentage", 1.0}})), "");
    server->sql("SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE usename = 'alice'");
    EXPECT_EQ(problem(save(*store, "laptop", {{"percentage", 2.0}})), "");
}

} // namespace
} // namespace velmora
