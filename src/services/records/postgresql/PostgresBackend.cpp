// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/postgresql/PostgresBackend.h"

#include "base/Wipe.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <new>
#include <sys/eventfd.h>
#include <system_error>
#include <utility>

namespace velmora::postgresql {

namespace {

using std::chrono::seconds;

constexpr seconds connectLimit{5};
constexpr seconds requestLimit{10};
constexpr double longestPause = 30; // seconds
/// A save that the server has not begun within this time must not be done any more: by `requestLimit` its
/// caller is told that it failed, and may save something newer. This plus the timeout of statements is less
/// than `requestLimit`.
constexpr seconds beginLimit{5};

// No statement has a function of the server's in what it updates: servers that spread their tables over many
// machines take none. The owner is compared as a text: as a name, which current_user is, it would not be
// found by the index.
constexpr auto fetchStatement = "SELECT type, fields::text FROM velmora.record "
                                "WHERE owner = current_user::text AND name = $1";
constexpr auto queryStatement =
    "SELECT name, fields::text FROM velmora.record "
    "WHERE owner = current_user::text AND type = $1 ORDER BY seq LIMIT $2::bigint";
constexpr auto removeStatement = "DELETE FROM velmora.record WHERE owner = current_user::text AND name = $1";
constexpr auto saveStatement =
    "INSERT INTO velmora.record AS r (type, name, fields) SELECT $1, $2, $3::jsonb "
    "WHERE pg_catalog.now() OPERATOR(pg_catalog.<) pg_catalog.to_timestamp($4::float8) "
    "ON CONFLICT (owner, name) DO UPDATE SET fields = r.fields || EXCLUDED.fields, version = r.version + 1 "
    "RETURNING version";
constexpr auto checkStatement =
    "SELECT (SELECT rolsuper OR rolbypassrls FROM pg_catalog.pg_roles WHERE rolname = current_user), "
    "pg_catalog.row_security_active('velmora.record')";
// Once for each connection: what else could be found under a name, how long a statement may run, and the
// server's time.
constexpr auto openingStatement = "SELECT pg_catalog.set_config('search_path', '', false), "
                                  "pg_catalog.set_config('statement_timeout', '4s', false), "
                                  "pg_catalog.date_part('epoch', pg_catalog.now())::bigint";

CloudError errorOf(const ServerFailure& failure)
{
    return {.text = failure.what(), .fault = failure.fault};
}

seconds timeIn(std::optional<std::string_view> told)
{
    constexpr std::int64_t never = 100'000'000'000;
    std::int64_t count = 0;
    const auto text = told.value_or("");
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error != std::errc{} || end != text.data() + text.size() || count < 0 || count > never)
        throw ServerFailure(RecordFault::other, "the server does not tell its time");
    return seconds(count);
}

} // namespace

PostgresBackend::PostgresBackend(RecordAccess access)
    : access_(std::move(access)), cancelled_(eventfd(0, EFD_CLOEXEC)), random_(std::random_device{}())
{
    if (!cancelled_) throw std::system_error(errno, std::generic_category(), "eventfd");
}

CloudResult<StoredRecord> PostgresBackend::fetch(const std::string& name)
{
    return asked<CloudResult<StoredRecord>>([&](Connection& server) -> CloudResult<StoredRecord> {
        const auto rows = server.ask(fetchStatement, {name}, patience(requestLimit));
        if (rows.count() == 0)
            return CloudError{.code = CloudError::Code::notFound, .text = "there is no such record"};
        return StoredRecord{std::string(rows.text(0, 0).value_or("")), name,
                            std::string(rows.text(0, 1).value_or(""))};
    });
}

std::optional<CloudError> PostgresBackend::save(const StoredRecord& record)
{
    return asked<std::optional<CloudError>>([&](Connection& server) -> std::optional<CloudError> {
        const auto begin = std::to_string((serverTime() + beginLimit).count());
        const auto rows = server.ask(saveStatement, {record.type, record.name, record.fields, begin},
                                     patience(requestLimit));
        if (rows.count() == 1) return std::nullopt;
        connection_.reset(); // the server's clock may have been set
        return CloudError{.text = "the server came to it too late", .fault = RecordFault::slow};
    });
}

CloudResult<std::vector<StoredRecord>> PostgresBackend::query(const std::string& type, std::size_t maximum)
{
    using Listed = CloudResult<std::vector<StoredRecord>>;
    return asked<Listed>([&](Connection& server) -> Listed {
        const auto rows = server.ask(queryStatement, {type, std::to_string(maximum)}, patience(requestLimit));
        std::vector<StoredRecord> records;
        const int count = static_cast<int>(std::min(maximum, static_cast<std::size_t>(rows.count())));
        records.reserve(static_cast<std::size_t>(count));
        for (int row = 0; row < count; ++row)
            records.push_back({type, std::string(rows.text(row, 0).value_or("")),
                               std::string(rows.text(row, 1).value_or(""))});
        return records;
    });
}

std::optional<CloudError> PostgresBackend::remove(const std::string& name)
{
    return asked<std::optional<CloudError>>([&](Connection& server) -> std::optional<CloudError> {
        server.ask(removeStatement, {name}, patience(requestLimit));
        return std::nullopt;
    });
}

std::optional<CloudError> PostgresBackend::check()
{
    return asked<std::optional<CloudError>>([&](Connection& server) -> std::optional<CloudError> {
        const auto rows = server.ask(checkStatement, {}, patience(requestLimit));
        if (rows.text(0, 0) != "f")
            return CloudError{.text = "the user may read everybody's records",
                              .fault = RecordFault::superuser};
        if (rows.text(0, 1) == "t") return std::nullopt;
        return CloudError{.text = "the server does not keep the records of its users apart",
                          .fault = RecordFault::noTable};
    });
}

void PostgresBackend::cancel() noexcept
{
    eventfd_write(cancelled_.get(), 1);
}

/// What `act` makes of a connection. Whatever fails is an answer.
template <typename Answer, typename Act>
Answer PostgresBackend::asked(Act act)
{
    try {
        return act(connected());
    } catch (const ServerFailure& failure) {
        return errorOf(failure);
    } catch (const Interrupted&) {
        return CloudError{.text = "the store is not wanted any more"};
    } catch (const std::exception& failure) {
        connection_.reset();
        return CloudError{.text = failure.what()};
    }
}

Connection& PostgresBackend::connected()
{
    if (connection_ && connection_->isUsable()) return *connection_;
    connection_.reset();
    if (failure_ && Time::now() < nextAttempt_) throw ServerFailure(*failure_);
    try {
        connect();
    } catch (const ServerFailure& failure) {
        connection_.reset();
        postpone(failure);
        throw;
    }
    failure_.reset();
    failures_ = 0;
    if (!connection_->isSuperuser() || isWarned_) return *connection_;
    isWarned_ = true;
    access_.log->warning("PostgresBackend", "The user " + access_.place.user +
                                                " of the record server may read everybody's records: it is a "
                                                "superuser there. A user of one's own is better.");
    return *connection_;
}

void PostgresBackend::connect()
{
    if (access_.place.host.starts_with('/'))
        throw ServerFailure(RecordFault::unknownHost, "\"" + access_.place.host + "\" is no name of a host");
    auto password = access_.password ? access_.password() : std::string();
    if (password.empty()) throw ServerFailure(RecordFault::noPassword, "no password is kept for the server");
    const auto limit = patience(connectLimit);
    try {
        connection_.emplace(access_.place, password, limit);
    } catch (...) {
        wipe(password);
        throw;
    }
    wipe(password);
    timeAtOpening_ = timeIn(connection_->ask(openingStatement, {}, limit).text(0, 2));
    opened_ = Time::now();
}

seconds PostgresBackend::serverTime() const
{
    return timeAtOpening_ + std::chrono::floor<seconds>(Time::now() - opened_);
}

void PostgresBackend::postpone(const ServerFailure& failure)
{
    failure_ = failure;
    const double pause = std::min(longestPause, static_cast<double>(1U << std::min(failures_++, 5)));
    std::uniform_real_distribution<double> part(0.5, 1);
    nextAttempt_ = Time::now() + std::chrono::duration_cast<Time::duration>(
                                     std::chrono::duration<double>(pause * part(random_)));
}

Patience PostgresBackend::patience(seconds limit) const
{
    return {Time::now() + limit, cancelled_.get()};
}

} // namespace velmora::postgresql
