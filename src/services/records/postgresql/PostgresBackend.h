// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"
#include "records/RecordModule.h"
#include "records/postgresql/Connection.h"

#include <chrono>
#include <optional>
#include <random>

namespace velmora::postgresql {

/// The records on a PostgreSQL server that velmora-fleet-server has set up; the server shows each user that
/// user's own alone.
///
/// Each save carries a deadline by the server's clock. A server that reaches it later leaves the save undone,
/// so that a save reported as failed never overwrites a newer one.
///
/// A connection is made when something is asked for, and closed when it rests. After an attempt that failed,
/// nothing is tried for a while that grows from about one second to about 30, at random, so that the
/// machines of a fleet do not all come back at once; what is asked for meanwhile fails at once and in the
/// same words.
class PostgresBackend final : public RecordBackend {
public:
    explicit PostgresBackend(RecordAccess access);

    CloudResult<StoredRecord> fetch(const std::string& name) override;
    std::optional<CloudError> save(const StoredRecord& record) override;
    CloudResult<std::vector<StoredRecord>> query(const std::string& type, std::size_t maximum) override;
    std::optional<CloudError> remove(const std::string& name) override;
    std::optional<CloudError> check() override;
    void rest() noexcept override { connection_.reset(); }
    void cancel() noexcept override;

private:
    using Time = std::chrono::steady_clock;

    template <typename Answer, typename Act>
    Answer asked(Act act);
    Connection& connected();
    void connect();
    std::chrono::seconds serverTime() const;
    void postpone(const ServerFailure& failure);
    Patience patience(std::chrono::seconds limit) const;

    RecordAccess access_;
    FileDescriptor cancelled_;
    std::optional<Connection> connection_;
    std::chrono::seconds timeAtOpening_{}; ///< the server's, since 1970
    Time::time_point opened_;              ///< the connection, by this computer's clock
    std::optional<ServerFailure> failure_; ///< of the last attempt to connect
    Time::time_point nextAttempt_;         ///< not before, where it failed
    int failures_ = 0;                     ///< attempts that failed, in a row
    std::minstd_rand random_;
    bool isWarned_ = false; ///< of a user who may read everybody's records
};

} // namespace velmora::postgresql
