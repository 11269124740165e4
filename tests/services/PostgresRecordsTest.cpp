// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LoopTest.h"
#include "ManualLoop.h"
#include "PostgresServer.h"
#include "Process.h"
#include "RecordingLog.h"
#include "ScriptedServer.h"
#include "ShellCommand.h"
#include "StoreRequests.h"
#include "TemporaryFolder.h"
#include "records/LinuxRecordStores.h"
#include "records/ServerVariables.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>

namespace velmora {
namespace {

using Answer = ScriptedServer::Answer;
using Manner = ScriptedServer::Manner;

/// A server that velmora-fleet-server has set up for alice and bob, and stores on it by the module as it was
/// built.
struct PostgresRecordsTest : LoopTest {
    TemporaryFolder folder;
    std::optional<PostgresServer> server;
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    std::shared_ptr<ManualLoop> time = std::make_shared<ManualLoop>();
    LinuxRecordStores stores{{.folders = {VELMORA_BIN "/../lib/velmora"}, .file = {}}, time, log};

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
        const auto command = std::string(VELMORA_BIN) + "/velmora-fleet-server " + arguments + " --host " +
                             server->folder() + " --port " + std::to_string(server->port());
        const int status =
            std::system((command + " >" + (folder.path() / "said").string() + " 2>&1").c_str());
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

    std::string tested(const RecordPlace& where, const std::string& password = "alice-pw")
    {
        return velmora::tested(stores, *time, where, [password] { return password; });
    }
    std::string faultOf(const RecordPlace& where, const std::string& password = "alice-pw")
    {
        const auto result = tested(where, password);
        return result.substr(0, result.find(':'));
    }
};

TEST_F(PostgresRecordsTest, MergesListsAndRemovesWhileTwoWritersLoseNothing)
{
    const auto store = open(place());
    EXPECT_EQ(problem(save(*store, "b", {{"percentage", 80.5}, {"lastUpdate", Date{3.25}}})), "");
    EXPECT_EQ(problem(save(*store, "a", {{"isCharging", true}})), "");
    EXPECT_EQ(problem(save(*store, "b", {{"deviceName", std::string("Schloß \"x\" '; --")}})), "");
    EXPECT_EQ(fieldsOf(*store, "b"),
              (CloudRecord::Fields{{"percentage", 80.5},
                                   {"lastUpdate", Date{3.25}},
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
    for (const std::string host : {"", "127.0.0.1,127.0.0.1", "@socket", "/run/postgresql"}) {
        other.host = host;
        EXPECT_EQ(faultOf(other), "unknown-host");
    }
    other = place();
    other.trust = RecordPlace::Trust::certificate;
    EXPECT_EQ(faultOf(other), "certificate");
    EXPECT_EQ(faultOf(place("postgres"), "admin-pw"), "superuser");
    EXPECT_EQ(log->count("The user postgres of the record server may read everybody's records"), 1U);

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

TEST_F(PostgresRecordsTest, ATestThatComesToNoEndIsAnsweredOnce)
{
    std::promise<std::string> password;
    std::vector<RecordFault> answers;
    stores.test(
        place(), [&] { return password.get_future().get(); },
        [&](RecordFault fault, const auto&) { answers.push_back(fault); });
    time->advance(std::chrono::seconds{20});
    EXPECT_THAT(answers, testing::ElementsAre(RecordFault::unreachable));
    password.set_value("alice-pw");
    EXPECT_EQ(tested(place()), ": ");
    EXPECT_EQ(answers.size(), 1U);
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
    EXPECT_TRUE(eventually([&] { return acknowledged > 20; }));
    server->kill();
    const int kept = acknowledged;
    server->start();
    EXPECT_GE(std::stod(server->sql("SELECT fields->>'percentage' FROM velmora.record")), kept);
    const int before = acknowledged;
    EXPECT_TRUE(eventually([&] { return acknowledged > before; }));
    isEnough = true;
    writer.join();

    // One that fails for a while fails in the same words, which are logged once.
    server->kill();
    std::string first; // the process behind the connection may answer once more
    EXPECT_TRUE(eventually([&] { return !(first = problem(save(*store, "laptop", {}))).empty(); }));
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
    EXPECT_TRUE(eventually(
        [&] { return server->sql("SELECT count(*) FROM pg_stat_activity WHERE usename = 'alice'") <= "1"; }));
    EXPECT_EQ(server->sql("SELECT version, fields->'percentage' FROM velmora.record"), "3|4.0")
        << "what was told to have failed is not done later";
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
    EXPECT_TRUE(eventually(
        [&] { return server->sql("SELECT count(*) FROM pg_stat_activity WHERE usename = 'alice'") == "0"; }));
    EXPECT_EQ(problem(save(*store, "laptop", {{"percentage", 2.0}})), "");
}

TEST_F(PostgresRecordsTest, NonsenseIsAFaultAndTakesNoMemory)
{
    const auto faultWith = [this](const std::string& words, Manner manner = Manner::raw) {
        const ScriptedServer liar([&](const auto&) { return Answer{.body = words, .manner = manner}; }, true);
        auto there = place();
        there.port = liar.port();
        return faultOf(there);
    };
    EXPECT_EQ(faultWith("N"), "no-encryption");
    EXPECT_EQ(faultWith("HTTP/1.0 400 Bad Request\r\n\r\n"), "other");
    EXPECT_NE(faultWith(std::string(16U << 20U, 'E')), "");
    EXPECT_EQ(faultWith(""), "unreachable");
    EXPECT_EQ(faultWith("", Manner::silent), "unreachable");

    const auto store = open(place());
    server->sql(
        "DROP TABLE velmora.record; CREATE VIEW velmora.record AS SELECT 'alice' AS owner, 'DeviceStatus' AS "
        "type, 'x' AS name, to_jsonb(repeat('x', 100000000)) AS fields, 1 AS seq; "
        "GRANT SELECT ON velmora.record TO alice");
    EXPECT_EQ(listed(*store), std::vector<std::string>{"the server answers more than can be"});
    server->sql("DROP VIEW velmora.record");
    EXPECT_THAT(problem(save(*store, "laptop", {})), testing::StartsWith("no-table: "));
}

TEST_F(PostgresRecordsTest, WhoStandsBetweenIsRefusedWithoutACertificate)
{
    folder.write("between.py", R"(import socket, ssl, sys, threading
folder, port = sys.argv[1], int(sys.argv[2])
def carry(one, other):
    try:
        while data := one.recv(65536): other.sendall(data)
    except OSError: pass
    other.close()
def serve(client):
    try:
        client.recv(8); client.sendall(b"S")
        own = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        own.load_cert_chain(folder + "/between.crt", folder + "/between.key")
        client = own.wrap_socket(client, server_side=True)
        server = socket.create_connection(("127.0.0.1", port))
        server.sendall(bytes([0, 0, 0, 8, 4, 210, 22, 47])); server.recv(1)
        server = ssl._create_unverified_context().wrap_socket(server)
    except OSError: return
    threading.Thread(target=carry, args=(client, server), daemon=True).start()
    carry(server, client)
listener = socket.create_server(("127.0.0.1", 0))
with open(folder + "/between.port", "w") as file: file.write(str(listener.getsockname()[1]) + "\n")
while True: threading.Thread(target=serve, args=(listener.accept()[0],), daemon=True).start()
)");
    const auto path = folder.path().string();
    folder.write("between",
                 "#!/bin/sh\nopenssl req -new -x509 -days 2 -nodes -subj /CN=localhost -newkey ec -pkeyopt "
                 "ec_paramgen_curve:prime256v1 -keyout " +
                     path + "/between.key -out " + path + "/between.crt\nexec python3 " + path +
                     "/between.py " + path + " " + std::to_string(server->port()) + "\n");
    std::filesystem::permissions(folder.path() / "between", std::filesystem::perms{0700});
    const Process between(folder.path() / "between", {}, folder.path() / "between.log");
    ASSERT_TRUE(eventually([&] { return folder.read("between.port").ends_with('\n'); }));
    auto there = place();
    there.port = static_cast<std::uint16_t>(std::stoi(folder.read("between.port")));
    const auto careless =
        "psql -XAtqc \"SELECT 'read'\" 'host=127.0.0.1 port=" + std::to_string(there.port) +
        " user=alice password=alice-pw dbname=velmora sslmode=require channel_binding=disable' >" + path +
        "/read 2>&1";
    std::system(careless.c_str());
    ASSERT_EQ(folder.read("read"), "read\n"); // it does read along, where nobody looks
    EXPECT_EQ(faultOf(there), "channel-binding");
}

// -- velmora-fleet-server

TEST_F(PostgresRecordsTest, SetUpMayBeRepeatedAndTheCheckFindsWhatIsWrong)
{
    const auto store = open(place());
    EXPECT_EQ(problem(save(*store, "laptop", {{"percentage", 1.0}})), "");
    ASSERT_EQ(administer("setup"), 0) << said;
    ASSERT_EQ(administer("check"), 0) << said;
    EXPECT_EQ(said.find("WRONG"), std::string::npos) << said;
    EXPECT_EQ(listed(*store), std::vector<std::string>{"laptop"});

    server->sql(
        "ALTER TABLE velmora.record DISABLE ROW LEVEL SECURITY; ALTER ROLE bob CREATEROLE; "
        "CREATE POLICY watch ON velmora.record USING (true); GRANT SELECT ON velmora.record TO PUBLIC; "
        "GRANT TRUNCATE ON velmora.record TO velmora_user; REVOKE DELETE ON velmora.record FROM "
        "velmora_user; "
        "DROP INDEX velmora.record_listing; ALTER SYSTEM SET password_encryption = 'md5'; "
        "ALTER SYSTEM SET fsync = off; SELECT pg_reload_conf()");
    server->sql("ALTER SYSTEM SET password_encryption = 'md5'", "postgres");
    server->sql("ALTER SYSTEM SET fsync = off", "postgres");
    server->start("-c ssl=off");
    EXPECT_EQ(administer("check"), 1);
    for (const std::string wrong :
         {"no TLS", "as SCRAM-SHA-256", "lost in a crash", "index for listings", "Row security is not on",
          "everybody their own records: own_records, watch.", "People lack rights to: delete.",
          "should not have: empty the table.", "Others have rights to schema or table: everybody.",
          "right to: bob."})
        EXPECT_THAT(said, testing::ContainsRegex("WRONG [^\n]*" + wrong));
    EXPECT_EQ(administer("add bob"), 1); // who has such rights gets no password of ours
    EXPECT_EQ(administer("add postgres"), 1);
    EXPECT_EQ(administer("remove postgres"), 1);
    EXPECT_EQ(administer("setup"), 1); // which gives back what is missing, and takes nothing away
    EXPECT_EQ(said.find("People lack rights"), std::string::npos) << said;
    EXPECT_EQ(administer("remove alice"), 0) << said;
    EXPECT_EQ(server->sql("SELECT count(*) FROM velmora.record"), "0");
    EXPECT_EQ(server->sql("SELECT count(*) FROM pg_roles WHERE rolname = 'alice'"), "0");
    EXPECT_EQ(administer("check --nonsense"), 2);
    EXPECT_EQ(administer("check --admin-password-file " + secret("alice", "alice-pw")), 1);
    // The library of 16 is held to SCRAM there instead.
    if (std::stoi(server->sql("SHOW server_version_num")) < 160'000) {
        EXPECT_THAT(said, testing::HasSubstr("no password is given to a socket"));
    }
}

TEST_F(PostgresRecordsTest, WhatOthersMadeIsLeftAloneAndGivesThemNoRights)
{
    server->sql("CREATE ROLE eve LOGIN; CREATE DATABASE shared OWNER eve; CREATE DATABASE hers OWNER eve; "
                "CREATE DATABASE half");
    const std::string trap = " LANGUAGE plpgsql AS $$ BEGIN ALTER ROLE eve SUPERUSER; RETURN NULL; END $$; ";
    server->sql("SET SESSION AUTHORIZATION eve; CREATE TABLE public.goods (x int); "
                "CREATE FUNCTION public.quote_ident(name) RETURNS text" +
                    trap,
                "shared");
    EXPECT_EQ(administer("setup --database shared"), 1);
    EXPECT_THAT(said, testing::ContainsRegex("WRONG +The database belongs to eve"));
    EXPECT_THAT(said, testing::ContainsRegex("note +Everybody who is known"));

    server->sql("SET SESSION AUTHORIZATION eve; CREATE FUNCTION public.take() RETURNS trigger" + trap +
                    "CREATE SCHEMA velmora; CREATE TABLE velmora.record (owner text DEFAULT current_user, "
                    "type text, name text, fields jsonb DEFAULT '{}', version bigint DEFAULT 1, seq bigint "
                    "GENERATED ALWAYS AS IDENTITY); CREATE TRIGGER take BEFORE DELETE ON velmora.record "
                    "EXECUTE FUNCTION public.take()",
                "hers");
    for (const std::string wrong : {"no superuser and may change them: eve", "belong there: trigger take"}) {
        for (const auto& command :
             {std::string("setup"), "add carol --password-file " + secret("carol", "x")}) {
            EXPECT_EQ(administer(command + " --database hers"), 1);
            EXPECT_THAT(said, testing::HasSubstr(wrong));
        }
        EXPECT_EQ(administer("remove carol"), 1); // looks into all databases
        server->sql("ALTER SCHEMA velmora OWNER TO postgres; ALTER TABLE velmora.record OWNER TO postgres",
                    "hers");
    }
    EXPECT_EQ(server->sql("SELECT rolsuper FROM pg_roles WHERE rolname = 'eve'"), "f");

    // As a set-up leaves it that was broken off.
    EXPECT_EQ(administer("setup --database half"), 0) << said;
    EXPECT_EQ(server->sql("SELECT has_database_privilege('eve', 'half', 'CONNECT')"), "f");

    server->sql("ALTER TABLE velmora.record ALTER owner DROP DEFAULT");
    std::ofstream(server->folder() + "/data/pg_hba.conf", std::ios::app)
        << "host replication all all trust\nhostssl sameuser all all pam\nnonsense\n";
    EXPECT_EQ(administer("check"), 1);
    EXPECT_THAT(said,
                testing::ContainsRegex("WRONG +Lines of pg_hba.conf [^\n]*\\(trust\\), [^\n]*\\(pam\\), "
                                       "[^\n]*\\(invalid connection type"));
    EXPECT_THAT(said, testing::ContainsRegex("WRONG +The table of records has other columns: owner text, "));
}

TEST_F(PostgresRecordsTest, NothingOfAPersonWhoIsRemovedPassesToTheNextOfThatName)
{
    const auto again = "add alice --password-file " + secret("alice", "alice-pw");
    EXPECT_EQ(administer("setup --database second"), 0) << said;
    server->sql("SET SESSION AUTHORIZATION alice; INSERT INTO velmora.record (type, name) VALUES ('x', 'y')",
                "second");
    EXPECT_THAT(server->sqlAs("alice", "alice-pw", "SELECT lo_create(0)"), testing::HasSubstr("ERROR"));
    server->sql("CREATE TABLE goods (); ALTER TABLE goods OWNER TO alice; SET SESSION AUTHORIZATION alice; "
                "SELECT lo_create(0); ALTER DEFAULT PRIVILEGES GRANT SELECT ON TABLES TO bob",
                "postgres");
    std::atomic<bool> isEnough = false;
    std::atomic<int> saved = 0;
    std::thread writer([&] {
        for (const auto own = open(place()); !isEnough;)
            if (!save(*own, std::to_string(saved), {})) ++saved;
    });
    EXPECT_TRUE(eventually([&] { return saved > 20; }));
    EXPECT_EQ(administer("remove alice"), 1);
    EXPECT_THAT(said, testing::HasSubstr("owns other things in: postgres."));
    EXPECT_THAT(server->sqlAs("alice", "alice-pw", "SELECT 1"),
                testing::HasSubstr("not permitted to log in"));
    server->sql("DROP TABLE goods", "postgres");
    EXPECT_EQ(administer(again), 0) << said; // in again, and at it
    EXPECT_TRUE(eventually([&, before = saved.load()] { return saved > before; }));
    EXPECT_EQ(administer("remove alice"), 0) << said;
    isEnough = true;
    writer.join();
    for (const std::string database : {"velmora", "second"})
        EXPECT_EQ(server->sql("SELECT count(*) FROM velmora.record", database), "0");

    // Who locks the table for all can be removed all the same, and leaves it open.
    std::system(
        ("PGPASSWORD=bob-pw psql -qc 'BEGIN; LOCK TABLE velmora.record; SELECT pg_sleep(99)' 'host=127.0.0.1 "
         "user=bob dbname=velmora port=" +
         std::to_string(server->port()) + "' >/dev/null 2>&1 &")
            .c_str());
    EXPECT_TRUE(eventually([&] {
        return server->sql("SELECT count(*) FROM pg_locks WHERE mode = 'AccessExclusiveLock' AND granted") !=
               "0";
    }));
    EXPECT_EQ(administer("remove bob"), 0) << said;
    // Records that an administrator's own DROP ROLE left.
    server->sql("INSERT INTO velmora.record (owner, type, name) VALUES ('alice', 'x', 'y')", "second");
    EXPECT_EQ(administer(again), 0) << said;
    EXPECT_EQ(server->sql("SELECT count(*) FROM velmora.record", "second"), "0");
}

TEST_F(PostgresRecordsTest, PasswordsAreAskedForOnTheTerminalAndNotShown)
{
    const auto administered = [this](const std::string& words, const std::vector<std::string>& answers) {
        return typed(VELMORA_BIN "/velmora-fleet-server " + words +
                         " --host localhost --database \"o\\\"ther'\" --port " +
                         std::to_string(server->port()),
                     answers);
    };
    EXPECT_EQ(administered("setup", {"wrong\n"}).status, 1);
    EXPECT_EQ(administered("setup", {"admin-pw\n"}).status, 0);
    const auto added = administered("add \"a\\\"b'c;--\"",
                                    {"admin-pw\n", "first-pw\n", "second-pw\n", "third-pw\n", "third-pw\n"});
    EXPECT_EQ(added.status, 0);
    EXPECT_THAT(added.said, testing::HasSubstr("not the same"));
    EXPECT_EQ(added.said.find("-pw"), std::string::npos) << added.said;
    auto there = place("a\"b'c;--");
    there.database = "o\"ther'";
    EXPECT_EQ(tested(there, "third-pw"), ": ");
    EXPECT_EQ(server->sql("SELECT left(rolpassword, 13) FROM pg_authid WHERE rolname LIKE 'a_b%'"),
              "SCRAM-SHA-256");
}

} // namespace
} // namespace velmora
