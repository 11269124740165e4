// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "BareStores.h"

#include <initializer_list>
#include <stdexcept>
#include <vector>

namespace velmora {

BareSqlite::BareSqlite(const std::filesystem::path& file)
{
    if (sqlite3_open(file.c_str(), out(database_)) != SQLITE_OK) throw std::runtime_error("no SQLite");
    sqlite3_busy_timeout(database_.get(), 5'000);
    execute("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL");
    const auto prepare = [this](Statement& statement, const char* text) {
        if (sqlite3_prepare_v2(database_.get(), text, -1, out(statement), nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(database_.get()));
    };
    prepare(fetch_, "SELECT type, name, fields FROM record WHERE name = ?1");
    prepare(save_,
            "INSERT INTO record(type, name, fields) VALUES('DeviceStatus', ?1, ?2) ON CONFLICT(name) DO "
            "UPDATE SET fields = json_patch(fields, excluded.fields), version = version + 1");
    prepare(list_,
            "SELECT type, name, fields FROM record WHERE type = 'DeviceStatus' ORDER BY seq LIMIT 200");
}

void BareSqlite::execute(const std::string& statements)
{
    if (sqlite3_exec(database_.get(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(database_.get()));
}

void BareSqlite::run(sqlite3_stmt* statement, const std::string& name, const std::string& fields)
{
    const auto bind = [statement](int index, const std::string& text) {
        if (sqlite3_bind_parameter_count(statement) >= index)
            sqlite3_bind_text(statement, index, text.c_str(), -1, SQLITE_STATIC);
    };
    bind(1, name);
    bind(2, fields);
    int code = SQLITE_ROW;
    while (code == SQLITE_ROW) {
        code = sqlite3_step(statement);
        if (code == SQLITE_ROW) sqlite3_column_text(statement, 2);
    }
    sqlite3_reset(statement);
    if (code != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database_.get()));
}

BarePostgres::BarePostgres(const std::string& connection) : connection_(PQconnectdb(connection.c_str()))
{
    if (PQstatus(connection_.get()) != CONNECTION_OK)
        throw std::runtime_error(PQerrorMessage(connection_.get()));
}

void BarePostgres::run(const char* statement, std::initializer_list<const char*> parameters)
{
    const Handle<PGresult, PQclear> result(PQexecParams(connection_.get(), statement,
                                                        static_cast<int>(parameters.size()), nullptr,
                                                        parameters.begin(), nullptr, nullptr, 0));
    const auto status = PQresultStatus(result.get());
    if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK)
        throw std::runtime_error(PQerrorMessage(connection_.get()));
}

void BarePostgres::fetch(const std::string& name)
{
    run("SELECT type, fields::text FROM velmora.record WHERE owner = current_user::text AND name = $1",
        {name.c_str()});
}

void BarePostgres::save(const std::string& name, const std::string& fields)
{
    run("INSERT INTO velmora.record AS r (type, name, fields) VALUES ('DeviceStatus', $1, $2::jsonb) "
        "ON CONFLICT (owner, name) DO UPDATE SET fields = r.fields || EXCLUDED.fields, "
        "version = r.version + 1 RETURNING version",
        {name.c_str(), fields.c_str()});
}

void BarePostgres::list()
{
    run("SELECT name, fields::text FROM velmora.record "
        "WHERE owner = current_user::text AND type = 'DeviceStatus' ORDER BY seq LIMIT 200",
        {});
}

} // namespace velmora
