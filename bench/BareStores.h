// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Handle.h"

#include <filesystem>
#include <libpq-fe.h>
#include <sqlite3.h>
#include <string>

namespace velmora {

/// The bare statements behind a record store, one after the other on the caller's thread: no waiting within
/// bounds, no second thread, and nobody looks at what was read. All throw std::runtime_error.
class BareStore {
public:
    virtual ~BareStore() = default;

    virtual void fetch(const std::string& name) = 0;
    virtual void save(const std::string& name, const std::string& fields) = 0;
    virtual void list() = 0; ///< the first 200
};

class BareSqlite final : public BareStore {
public:
    explicit BareSqlite(const std::filesystem::path& file);

    void fetch(const std::string& name) override { run(fetch_.get(), name, {}); }
    void save(const std::string& name, const std::string& fields) override { run(save_.get(), name, fields); }
    void list() override { run(list_.get(), {}, {}); }

    void execute(const std::string& statements);

private:
    using Statement = Handle<sqlite3_stmt, sqlite3_finalize>;
    void run(sqlite3_stmt* statement, const std::string& name, const std::string& fields);

    Handle<sqlite3, sqlite3_close> database_;
    Statement fetch_, save_, list_;
};

class BarePostgres final : public BareStore {
public:
    explicit BarePostgres(const std::string& connection);

    void fetch(const std::string& name) override;
    void save(const std::string& name, const std::string& fields) override;
    void list() override;

private:
    void run(const char* statement, std::initializer_list<const char*> parameters);

    Handle<PGconn, PQfinish> connection_;
};

} // namespace velmora
