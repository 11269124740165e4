// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/postgresql/server/Setup.h"

#include "base/Translation.h"
#include "base/Wipe.h"
#include "records/postgresql/server/Passwords.h"

#include <chrono>
#include <stdexcept>

namespace velmora::postgresql {

namespace {

// One set-up at a time: without the lock in its first line several at once would stumble over each other.
constexpr auto lockStatement = "SELECT pg_advisory_xact_lock(1986358381)";

// The owner belongs to the key, or names of two people's records would collide; its collation is what
// listings are looked up by. Roles are the whole server's, where no lock of a database holds off another
// set-up.
constexpr auto schemaStatements = R"(
CREATE SCHEMA IF NOT EXISTS velmora;
CREATE TABLE IF NOT EXISTS velmora.record (
  owner text COLLATE "C" NOT NULL DEFAULT current_user, type text NOT NULL, name text COLLATE "C" NOT NULL,
  fields jsonb NOT NULL DEFAULT '{}', version bigint NOT NULL DEFAULT 1,
  seq bigint GENERATED ALWAYS AS IDENTITY,
  PRIMARY KEY (owner, name), CHECK (jsonb_typeof(fields) = 'object'),
  CHECK (octet_length(name) <= 255 AND octet_length(fields::text) <= 65536)) WITH (fillfactor = 70);
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

void begin(Connection& server)
{
    server.run("BEGIN", setupPatience());
    server.ask(lockStatement, {}, setupPatience());
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

/// Whether the database was there.
bool hasDatabase(Administrator& administrator, const std::string& database)
{
    try {
        administrator.connect(database);
        return true;
    } catch (const ServerFailure& failure) {
        if (failure.fault != RecordFault::noDatabase) throw;
    }
    auto server = administrator.connect("postgres");
    makeDatabase(server, database);
    return false;
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
    const bool isNew = !hasDatabase(administrator, database);
    auto server = administrator.connect(database);
    begin(server);
    const auto name = server.quotedName(database);
    if (isNew) // then it is Velmora's alone, and nobody else gets in
        server.run("REVOKE ALL ON DATABASE " + name + " FROM PUBLIC; REVOKE ALL ON SCHEMA public FROM PUBLIC",
                   setupPatience());
    server.run(schemaStatements, setupPatience());
    server.run("GRANT CONNECT ON DATABASE " + name + " TO " + usersRole, setupPatience());
    server.run("COMMIT", setupPatience());
}

bool isPerson(Connection& server, const std::string& person)
{
    if (!server.ask("SELECT to_regclass('velmora.record')", {}, setupPatience()).text(0, 0))
        throw std::runtime_error(tr("The database has no table of records: \"setup\" makes it."));
    const auto rows = server.ask(roleStatement, {person}, setupPatience());
    if (rows.count() == 0) return false;
    if (rows.text(0, 1) == "t" && rows.text(0, 0) == "f") return true;
    throw std::runtime_error(rows.text(0, 1) == "t"
                                 ? tr("%1 has rights on the server that no person may have.", person)
                                 : tr("There is a role %1 that is not one of Velmora's people.", person));
}

void addPerson(Connection& server, const std::string& person, const std::string& password)
{
    begin(server);
    const bool isKnown = isPerson(server, person);
    const auto kept = server.quotedText(server.encrypted(password, person));
    const auto name = server.quotedName(person);
    server.run(isKnown ? "ALTER ROLE " + name + " LOGIN PASSWORD " + kept
                       : "CREATE ROLE " + name + " LOGIN PASSWORD " + kept + " IN ROLE " + usersRole,
               setupPatience());
    server.run("COMMIT", setupPatience());
}

void removePerson(Connection& server, const std::string& person)
{
    begin(server);
    if (!isPerson(server, person)) throw std::runtime_error(tr("There is no person %1.", person));
    const auto name = server.quotedName(person);
    // As that person: others, the table's owner among them, see nothing of these records.
    server.run("SET LOCAL ROLE " + name +
                   "; DELETE FROM velmora.record WHERE owner = current_user::text; "
                   "RESET ROLE; DROP ROLE " +
                   name,
               setupPatience());
    server.run("COMMIT", setupPatience());
    // A connection of a role that is gone sees no records, but would stay.
    server.ask("SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE usename IS NULL AND "
               "usesysid IS NOT NULL AND datname = current_database()",
               {}, setupPatience());
}

} // namespace velmora::postgresql
