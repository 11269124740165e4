// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Handle.h"
#include "platform/RecordStores.h"
#include "records/postgresql/HostAddresses.h"
#include "records/postgresql/ServerFailure.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <libpq-fe.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::postgresql {

/// A table of texts: what a server answered.
class Rows {
public:
    explicit Rows(PGresult* result = nullptr) : result_(result) {}

    int count() const { return result_ ? PQntuples(result_.get()) : 0; }
    /// Nothing for null, and where there is no such row or column.
    std::optional<std::string_view> text(int row, int column) const;

private:
    Handle<PGresult, PQclear> result_;
};

/// A connection to a PostgreSQL server, as much as possible of which its caller decides and no environment or
/// file of the user's: with TLS at a distance, by the trust that the place names. No call waits longer
/// than its patience, whatever the server does, and no answer takes more memory than `mostAnswer`.
///
/// One thread at a time. All that fails throws ServerFailure or Interrupted, and leaves a connection that is
/// not usable unless the server itself said no. The variables of `forgetServerVariables` must be gone.
class Connection {
public:
    static constexpr std::size_t mostAnswer = std::size_t{16} << 20U; ///< bytes; 200 records are less

    /// The password is not kept. A place whose host is a folder, "/...", is that of a server's socket on this
    /// computer, where the system says who the user is; the password may then be empty. With libpq before 16
    /// it must be, but for the folder in which distributions have that socket.
    Connection(const RecordPlace& place, const std::string& password, const Patience& patience);

    /// One statement with its parameters $1, $2, ...
    Rows ask(const char* statement, const std::vector<std::string>& parameters, const Patience& patience);
    /// Several statements, without an answer.
    void run(const std::string& statements, const Patience& patience);

    /// Nothing has ended it so far, and nothing has come that was not asked for.
    bool isUsable() const;
    bool hasEncryption() const { return PQsslInUse(connection_.get()) == 1; }
    /// The server says that this user may read everybody's records.
    bool isSuperuser() const;
    /// 150004 for 15.4.
    int serverVersion() const { return PQserverVersion(connection_.get()); }

    /// As an SQL name and as an SQL text, quotes included.
    std::string quotedName(const std::string& name) const;
    std::string quotedText(const std::string& text) const;
    /// The form of `password` that a server keeps, so that it never learns the password itself.
    std::string encrypted(const std::string& password, const std::string& user) const;

private:
    using Socket = Handle<PGconn, PQfinish>;

    static Socket connected(const RecordPlace& place, const std::string& address, const std::string& password,
                            const Patience& patience);
    Rows answer(const Patience& patience);
    Rows collected(const Patience& patience);
    void flush(const Patience& patience);
    void receive(const Patience& patience);
    void consume();
    void abandon() noexcept;
    [[noreturn]] void fail();

    Socket connection_;
    std::uint64_t received_ = 0; ///< bytes over the network before the present request
};

} // namespace velmora::postgresql
