// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "PostgresServer.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <glob.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace velmora {

namespace {

/// The folder of the newest server's programs; empty where there is none.
std::string programs()
{
    glob_t found{};
    std::string folder;
    if (glob("/usr/lib/postgresql/*/bin", 0, nullptr, &found) == 0)
        folder = found.gl_pathv[found.gl_pathc - 1];
    globfree(&found);
    return folder;
}

std::uint16_t freePort()
{
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(socket, reinterpret_cast<sockaddr*>(&address), size);
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    close(socket);
    return ntohs(address.sin_port);
}

/// It refuses to run as root.
std::string asSomebody()
{
    return geteuid() == 0 ? "setpriv --reuid=nobody --regid=nogroup --clear-groups " : "";
}

} // namespace

bool PostgresServer::isInstalled()
{
    return !programs().empty() && std::system("command -v openssl psql >/dev/null") == 0;
}

PostgresServer::PostgresServer() : port_(freePort())
{
    const auto folder = folder_.path().string();
    folder_.write("password", "admin-pw\n");
    folder_.write("make", "#!/bin/sh -e\ncd " + folder + "\n" + programs() +
                              "/initdb -D data -U postgres --pwfile=password --auth-host=scram-sha-256 "
                              "--auth-local=trust -E UTF8 --no-locale -N\n"
                              "openssl req -new -x509 -days 2 -nodes -subj /CN=localhost -newkey ec -pkeyopt "
                              "ec_paramgen_curve:prime256v1 -keyout data/server.key -out data/server.crt\n");
    if (geteuid() == 0) std::system(("chown -R nobody " + folder).c_str());
    const auto make = asSomebody() + "sh " + folder + "/make >" + folder + "/making 2>&1 </dev/null";
    if (std::system(make.c_str()) != 0) throw std::runtime_error(folder_.read("making"));
    start();
}

void PostgresServer::start(const std::string& settings)
{
    kill();
    folder_.write("server", "#!/bin/sh\nexec " + asSomebody() + programs() + "/postgres -D " + folder() +
                                "/data -p " + std::to_string(port_) +
                                " -c listen_addresses=127.0.0.1 -c ssl=on -c unix_socket_directories=" +
                                folder() + " " + settings + "\n");
    std::filesystem::permissions(folder_.path() / "server", std::filesystem::perms{0755});
    process_.emplace(folder_.path() / "server", Process::Environment{}, folder_.path() / "log");
    for (int i = 0; i < 400; ++i) {
        if (sql("SELECT 'ready'", "postgres") == "ready") return;
        std::this_thread::sleep_for(std::chrono::milliseconds{50});
    }
    throw std::runtime_error(folder_.read("log"));
}

void PostgresServer::kill()
{
    if (!process_) return;
    signalAll(SIGKILL);
    process_.reset();
}

void PostgresServer::signalAll(int number) const
{
    std::ifstream pid(folder_.path() / "data" / "postmaster.pid");
    std::string parent;
    if (!(pid >> parent)) return;
    // The parent first: it would make new ones, and take the end of one for a crash.
    ::kill(std::stoi(parent), number);
    std::ifstream children("/proc/" + parent + "/task/" + parent + "/children");
    for (int child = 0; children >> child;) ::kill(child, number);
}

std::string PostgresServer::sql(const std::string& statements, const std::string& database) const
{
    return psql("host=" + folder() + " user=postgres dbname=" + database, statements);
}

std::string PostgresServer::sqlAs(const std::string& user, const std::string& password,
                                  const std::string& statements) const
{
    return psql("host=127.0.0.1 sslmode=require dbname=velmora user=" + user + " password=" + password,
                statements);
}

std::string PostgresServer::psql(const std::string& connection, const std::string& statements) const
{
    folder_.write("statements", statements);
    const auto port = " port=" + std::to_string(port_);
    const auto command = "psql -XAtq '" + connection + port + "' -f " + folder() + "/statements >" +
                         folder() + "/said 2>&1 </dev/null";
    std::system(command.c_str());
    auto said = folder_.read("said");
    while (said.ends_with('\n')) said.pop_back();
    return said;
}

} // namespace velmora
