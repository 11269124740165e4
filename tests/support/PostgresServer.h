// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "Process.h"
#include "TemporaryFolder.h"

#include <csignal>
#include <cstdint>
#include <optional>
#include <string>

namespace velmora {

/// A real PostgreSQL server on a port of 127.0.0.1, with TLS by a certificate of its own. Its administrator
/// "postgres" has the password "admin-pw" there, and needs none by the socket. Gone with the object.
class PostgresServer {
public:
    static bool isInstalled();

    PostgresServer();
    ~PostgresServer() { kill(); }
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;

    std::uint16_t port() const { return port_; }
    /// Where its socket is.
    std::string folder() const { return folder_.path(); }

    /// With more settings as "-c NAME=VALUE". Returns once it answers.
    void start(const std::string& settings = "");
    /// As if the power had gone: all its processes at once.
    void kill();
    /// All its processes stop where they are, and go on.
    void freeze() const { signalAll(SIGSTOP); }
    void thaw() const { signalAll(SIGCONT); }

    /// What the server says to these statements of the administrator's, errors included.
    std::string sql(const std::string& statements, const std::string& database = "velmora") const;
    /// Likewise as somebody else, over the network.
    std::string sqlAs(const std::string& user, const std::string& password,
                      const std::string& statements) const;

private:
    std::string psql(const std::string& connection, const std::string& statements) const;
    void signalAll(int number) const;

    TemporaryFolder folder_;
    std::uint16_t port_ = 0;
    std::optional<Process> process_;
};

} // namespace velmora
