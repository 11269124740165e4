// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/postgresql/server/Setup.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "base/Wipe.h"
#include "records/postgresql/server/Passwords.h"

#include <chrono>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <thread>

namespace velmora::postgresql {

namespace {

// One change at a time: without this lock several at once would stumble over each other. Roles are the whole
// server's, and so is this lock, which only superusers can take: others go without.
constexpr auto lockStatement = R"(DO $$ BEGIN
  LOCK TABLE pg_catalog.pg_authid IN SHARE UPDATE EXCLUSIVE MODE;
EXCEPTION WHEN insufficient_privilege THEN NULL; END $$)";

// Whether nothing is there yet: a database just made, maybe by a set-up that was broken off. Some are empty
// and everybody's all the same.
constexpr auto isBareStatement = R"(
SELECT current_database() NOT IN ('postgres', 'template1') AND
       (SELECT string_agg(nspname, ',') FROM pg_namespace
        WHERE nspname !~ '^pg_' AND nspname <> 'information_schema') = 'public'
       AND NOT EXISTS (SELECT FROM pg_class WHERE relnamespace = to_regnamespace('public')))";

// Large objects are the one thing that people could create without a right.
constexpr auto closeStatements = R"(
REVOKE ALL ON SCHEMA public FROM PUBLIC;
REVOKE EXECUTE ON FUNCTION lo_creat(int), lo_create(oid), lo_from_bytea(oid, bytea) FROM PUBLIC;
)";

// The owner belongs to the key, or names of two people's records would collide; its collation is what
// listings are looked up by.
constexpr auto tableStatements = R"(
CREATE SCHEMA IF NOT EXISTS velmora;
CREATE TABLE IF NOT EXISTS velmora.record (
  owner text COLLATE "C" NOT NULL DEFAULT current_user, type text NOT NULL, name text COLLATE "C" NOT NULL,
  fields jsonb NOT NULL DEFAULT '{}', version bigint NOT NULL DEFAULT 1,
  seq bigint GENERATED ALWAYS AS IDENTITY,
  PRIMARY KEY (owner, name), CHECK (jsonb_typeof(fields) = 'object'),
  CHECK (octet_length(name) <= 255 AND octet_length(fields::text) <= 65536)) WITH (fillfactor = 70);
)";

constexpr auto ruleStatements = R"(
CREATE INDEX IF NOT EXISTS record_listing ON velmora.record (owner, type, seq);
ALTER TABLE velmora.record ENABLE ROW LEVEL SECURITY;
ALTER TABLE velmora.record FORCE ROW LEVEL SECURITY;
DO $$ BEGIN
  CREATE POLICY own_records ON velmora.record
    USING (owner = current_user::text) WITH CHECK (owner = current_user::text);
EXCEPTION WHEN duplicate_object THEN NULL; END $$;
DO $$ BEGIN
  CREATE ROLE velmora_user NOLOGIN;
EXCEPTION WHEN duplicate_object OR unique_violation THEN NULL; END $$;
GRANT USAGE ON SCHEMA velmora TO velmora_user;
GRANT SELECT, DELETE, INSERT (type, name, fields), UPDATE (fields, version) ON velmora.record
  TO velmora_user;
)";

// What somebody is on the server: one of Velmora's people, or one with more rights than these may have.
constexpr auto roleStatement =
    "SELECT rolsuper OR rolbypassrls OR rolcreaterole OR rolcreatedb OR rolreplication, EXISTS ("
    "SELECT FROM pg_auth_members m JOIN pg_roles g ON g.oid = m.roleid "
    "WHERE g.rolname = 'velmora_user' AND m.member = r.oid) FROM pg_roles r WHERE rolname = $1";

constexpr auto usersRole = "velmora_user";

// What stays behind in templates, which new databases are copied from, would stay there for good.
constexpr auto databasesStatement = R"(
SELECT datname FROM pg_database d WHERE datallowconn AND (NOT datistemplate OR EXISTS (
  SELECT FROM pg_shdepend JOIN pg_roles r ON r.oid = refobjid
  WHERE dbid = d.oid AND refclassid = 'pg_authid'::regclass AND rolname = $1)) ORDER BY datname)";

constexpr auto endStatement = R"(
SELECT count(pg_terminate_backend(pid)) FROM pg_stat_activity
WHERE usesysid = (SELECT oid FROM pg_roles WHERE rolname = $1))";

// Without rights people can own large objects and default rights alone: the rest is for other uses.
constexpr auto othersStatement = R"(
SELECT string_agg(DISTINCT coalesce(datname, 'the server'), ', ')
FROM pg_shdepend JOIN pg_roles r ON r.oid = refobjid LEFT JOIN pg_database d ON d.oid = dbid
WHERE refclassid = 'pg_authid'::regclass AND rolname = $1 AND deptype = 'o'
  AND classid NOT IN ('pg_largeobject'::regclass, 'pg_default_acl'::regclass))";

void begin(Connection& server)
{
    server.run("BEGIN", setupPatience());
    server.run(lockStatement, setupPatience());
}

/// The database is for all languages, whatever the server's is.
void makeDatabase(Connection& server, const std::string& database)
{
    try {
        server.run("CREATE DATABASE " + server.quotedName(database) +
                       " TEMPLATE template0 ENCODING 'UTF8' LC_COLLATE 'C' LC_CTYPE 'C'",
                   setupPatience());
    } catch (const ServerFailure& failure) {
        const bool isThere = failure.state == "42P04" || failure.state == "23505"; // somebody was faster
        if (!isThere) throw;
    }
}

void provideDatabase(Administrator& administrator, const std::string& database)
{
    try {
        administrator.connect(database);
    } catch (const ServerFailure& failure) {
        if (failure.fault != RecordFault::noDatabase) throw;
        auto server = administrator.connect("postgres");
        makeDatabase(server, database);
    }
}

/// Nobody else gets into a database that is Velmora's alone.
void closeToOthers(Connection& server, const std::string& name)
{
    if (server.ask(isBareStatement, {}, setupPatience()).text(0, 0) == "t")
        server.run("REVOKE ALL ON DATABASE " + name + " FROM PUBLIC;" + closeStatements, setupPatience());
}

void refuseForeign(Connection& server)
{
    const auto found = foreignness(server);
    if (!found.empty()) throw std::runtime_error(tr("Velmora did not make what is there. %1", found));
}

bool hasTable(Connection& server)
{
    return server.ask("SELECT to_regclass('velmora.record')", {}, setupPatience()).text(0, 0).has_value();
}

/// In all databases of the server, since a role is the whole server's.
template <typename Act>
void inEachDatabase(Administrator& administrator, const std::string& person, Act act)
{
    auto server = administrator.connect();
    const auto databases = server.ask(databasesStatement, {person}, setupPatience());
    for (int row = 0; row < databases.count(); ++row) {
        const std::string name(*databases.text(row, 0));
        std::optional<Connection> there;
        try {
            there.emplace(administrator.connect(name));
        } catch (const ServerFailure& failure) { // pg_hba.conf may keep administrators from it
            std::fprintf(
                stderr, "%s\n",
                printable(tr("The database %1 was not looked into: %2", name, failure.what())).c_str());
        }
        if (there) act(*there);
    }
}

/// So that they never become those of another person of that name.
void forgetRecords(Administrator& administrator, const std::string& person)
{
    inEachDatabase(administrator, person, [&](Connection& server) {
        // A trigger of somebody else's would be run with the administrator's rights.
        if (!hasTable(server) || !foreignness(server).empty()) return;
        // Who may not look at everybody's records would otherwise delete none, and not be told.
        server.run("SET row_security = off", setupPatience());
        server.ask("DELETE FROM velmora.record WHERE owner = $1", {person}, setupPatience());
    });
}

/// Whether the role is there. It throws for one that is not a person's, or has more rights than these may.
bool isKnown(Connection& server, const std::string& person)
{
    const auto rows = server.ask(roleStatement, {person}, setupPatience());
    if (rows.count() == 0) return false;
    if (rows.text(0, 1) == "t" && rows.text(0, 0) == "f") return true;
    throw std::runtime_error(rows.text(0, 1) == "t"
                                 ? tr("%1 has rights on the server that no person may have.", person)
                                 : tr("There is a role %1 that is not one of Velmora's people.", person));
}

void endConnections(Connection& server, const std::string& person)
{
    const auto limit = setupPatience();
    while (server.ask(endStatement, {person}, limit).text(0, 0) != "0") {
        if (std::chrono::steady_clock::now() > limit.deadline)
            throw std::runtime_error(tr("The connections of %1 do not end.", person));
        std::this_thread::sleep_for(std::chrono::milliseconds{50});
    }
}

void dropRole(Administrator& administrator, Connection& server, const std::string& person)
{
    const auto name = server.quotedName(person);
    const auto others = server.ask(othersStatement, {person}, setupPatience());
    if (const auto where = others.text(0, 0))
        throw std::runtime_error(tr("%1 cannot log in any more, but owns other things in: %2. Give them to "
                                    "somebody or drop them there, and give this command once more.",
                                    person, std::string(*where)));
    inEachDatabase(administrator, person,
                   [&](Connection& there) { there.run("DROP OWNED BY " + name, setupPatience()); });
    server.run("DROP ROLE " + name, setupPatience());
}

} // namespace

Patience setupPatience()
{
    return {std::chrono::steady_clock::now() + std::chrono::seconds{30}};
}

Administrator::~Administrator()
{
    wipe(password_);
}

Connection Administrator::connect(const std::string& database)
{
    auto server = connected(database);
    // Whoever may create functions there could otherwise have the administrator run them.
    server.run("SELECT pg_catalog.set_config('search_path', '', false)", setupPatience());
    return server;
}

Connection Administrator::connected(const std::string& database)
{
    auto place = request_.place;
    place.database = database;
    const auto question = tr("Password of %1, who administers the server:", place.user);
    const bool isByNetwork = !place.host.starts_with('/');
    if (password_.empty() && (isByNetwork || !request_.adminPasswordFile.empty()))
        password_ = passwordFor(request_.adminPasswordFile, question, false);
    try {
        return {place, password_, setupPatience()};
    } catch (const ServerFailure& failure) {
        // By the socket most servers know who asks; this one wants a password all the same.
        if (failure.fault != RecordFault::noPassword || !password_.empty()) throw;
    }
    password_ = passwordFor({}, question, false);
    return {place, password_, setupPatience()};
}

void setUp(Administrator& administrator, const Request& request)
{
    const auto& database = request.place.database;
    provideDatabase(administrator, database);
    auto server = administrator.connect(database);
    const auto name = server.quotedName(database);
    begin(server);
    closeToOthers(server, name);
    server.run(tableStatements, setupPatience());
    refuseForeign(server);
    server.run(ruleStatements, setupPatience());
    server.run("GRANT CONNECT ON DATABASE " + name + " TO " + usersRole, setupPatience());
    server.run("COMMIT", setupPatience());
}

bool isPerson(Connection& server, const std::string& person)
{
    if (!hasTable(server))
        throw std::runtime_error(tr("The database has no table of records: \"setup\" makes it."));
    refuseForeign(server);
    return isKnown(server, person);
}

void addPerson(Administrator& administrator, const std::string& person, const std::string& password)
{
    auto server = administrator.connect();
    begin(server);
    const bool isThere = isPerson(server, person);
    if (!isThere) forgetRecords(administrator, person);
    const auto kept = server.quotedText(server.encrypted(password, person));
    const auto name = server.quotedName(person);
    server.run(isThere ? "ALTER ROLE " + name + " LOGIN PASSWORD " + kept
                       : "CREATE ROLE " + name + " LOGIN PASSWORD " + kept + " IN ROLE " + usersRole,
               setupPatience());
    server.run("COMMIT", setupPatience());
}

void removePerson(Administrator& administrator, const std::string& person)
{
    auto server = administrator.connect();
    begin(server);
    // It does not look at the table, which those who are to be removed may have locked.
    const bool isThere = isKnown(server, person);
    if (isThere) server.run("ALTER ROLE " + server.quotedName(person) + " NOLOGIN", setupPatience());
    server.run("COMMIT", setupPatience());
    if (isThere) {
        endConnections(server, person);
        dropRole(administrator, server, person);
    }
    // After the role, so that nothing is saved in between; and without one, where an earlier attempt ended.
    forgetRecords(administrator, person);
    if (!isThere) throw std::runtime_error(tr("There is no person %1.", person));
}

} // namespace velmora::postgresql
