// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/postgresql/Connection.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <linux/tcp.h>
#include <mutex>
#include <netinet/in.h>
#include <new>
#include <openssl/crypto.h>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace velmora::postgresql {

namespace {

using namespace std::chrono;

constexpr auto systemCertificates = "/etc/ssl/certs/ca-certificates.crt";
constexpr auto noFile = "/dev/null/none"; // libpq takes an empty name for its default

using Text = Handle<char, PQfreemem>;
using Parameters = std::vector<std::pair<const char*, std::string>>;

bool isSocketFolder(const std::string& host)
{
    return host.starts_with('/');
}

/// On a Unix socket libpq before version 16 sends the password in clear text to any server that asks for it,
/// so it gets one only for the system's own sockets.
bool mayAskForPassword(const std::string& host)
{
    const bool isOfSystem = host == "/run/postgresql" || host == "/var/run/postgresql";
    return !isSocketFolder(host) || isOfSystem || PQlibVersion() >= 160'000;
}

/// All of them, so that nothing is left to libpq's defaults, among which are files in the user's home.
Parameters parametersOf(const RecordPlace& place, const std::string& address)
{
    Parameters all{{"host", place.host},
                   {"port", std::to_string(place.port)},
                   {"dbname", place.database},
                   {"user", place.user},
                   {"gssencmode", "disable"},
                   {"client_encoding", "UTF8"},
                   {"application_name", "velmora"},
                   {"target_session_attrs", "any"},
                   {"passfile", noFile},
                   {"sslcert", noFile},
                   {"sslcrl", noFile}};
    // Before 16 a server with a trusted certificate could ask for the password itself.
    if (PQlibVersion() >= 160'000)
        all.emplace_back("require_auth", isSocketFolder(place.host) ? "none,scram-sha-256" : "scram-sha-256");
    if (isSocketFolder(place.host)) return all;
    const bool isCertified = place.trust == RecordPlace::Trust::certificate;
    all.insert(all.end(), {{"hostaddr", address},
                           {"sslmode", isCertified ? "verify-full" : "require"},
                           {"sslrootcert", isCertified ? systemCertificates : noFile},
                           {"channel_binding", isCertified ? "prefer" : "require"}});
    return all;
}

Handle<PGconn, PQfinish> begin(const Parameters& parameters, const std::string& password)
{
    std::vector<const char*> names, values;
    for (const auto& [name, value] : parameters) {
        names.push_back(name);
        values.push_back(value.c_str());
    }
    names.insert(names.end(), {"password", nullptr});
    values.insert(values.end(), {password.c_str(), nullptr});
    Handle<PGconn, PQfinish> begun(PQconnectStartParams(names.data(), values.data(), 0));
    if (!begun) throw std::bad_alloc();
    PQsetErrorVerbosity(begun.get(), PQERRORS_VERBOSE); // which tell SQLSTATE
    PQsetNoticeReceiver(
        begun.get(), [](void*, const PGresult*) {}, nullptr); // by default they go to standard error
    return begun;
}

/// Bytes that have come over the network; 0 for a socket of this computer.
std::uint64_t receivedBy(PGconn* connection)
{
    tcp_info told{};
    socklen_t size = sizeof told;
    const bool isTold = getsockopt(PQsocket(connection), IPPROTO_TCP, TCP_INFO, &told, &size) == 0;
    return isTold ? told.tcpi_bytes_received : 0;
}

/// What is to be tried in turn.
std::vector<std::string> addressesFor(const std::string& host, const Patience& patience)
{
    // libpq would take these for several hosts, or for a socket that has no name in the file system.
    if (host.empty() || host.find(',') != host.npos || host.starts_with('@'))
        throw ServerFailure(RecordFault::unknownHost, "\"" + host + "\" is no name of a host");
    std::array<unsigned char, sizeof(in6_addr)> number{};
    const bool isNumeric = inet_pton(AF_INET, host.c_str(), number.data()) == 1 ||
                           inet_pton(AF_INET6, host.c_str(), number.data()) == 1;
    if (isNumeric || isSocketFolder(host)) return {host};
    return addressesOf(host, patience);
}

} // namespace

std::optional<std::string_view> Rows::text(int row, int column) const
{
    const auto* result = result_.get();
    const bool isThere = result && row < PQntuples(result) && column < PQnfields(result);
    if (!isThere || PQgetisnull(result, row, column)) return std::nullopt;
    const auto length = static_cast<std::size_t>(PQgetlength(result, row, column));
    return std::string_view(PQgetvalue(result, row, column), length);
}

Connection::Connection(const RecordPlace& place, const std::string& password, const Patience& patience)
{
    // A program that ends does not wait for this thread, which OpenSSL's own clean-up would pull the rug
    // from.
    static std::once_flag isKept;
    std::call_once(isKept, [] { OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr); });
    if (!password.empty() && !mayAskForPassword(place.host))
        throw ServerFailure(RecordFault::other, "no password is given to a socket in " + place.host +
                                                    ", whose server could read it: use --host localhost");
    const auto addresses = addressesFor(place.host, patience);
    for (auto left = addresses.size(); !connection_; --left) {
        const auto now = steady_clock::now();
        const Patience share{now + (patience.deadline - now) / static_cast<int>(left), patience.interruption};
        try {
            connection_ = connected(place, addresses[addresses.size() - left], password, share);
        } catch (const ServerFailure& failure) {
            const bool isElsewhere =
                failure.fault == RecordFault::unreachable || failure.fault == RecordFault::noServer;
            if (left == 1 || !isElsewhere) throw;
        }
    }
}

Connection::Socket Connection::connected(const RecordPlace& place, const std::string& address,
                                         const std::string& password, const Patience& patience)
{
    constexpr std::uint64_t mostGreeting = 1U << 20U;
    auto connection = begin(parametersOf(place, address), password);
    auto wanted = PQstatus(connection.get()) == CONNECTION_BAD ? PGRES_POLLING_FAILED : PGRES_POLLING_WRITING;
    while (wanted != PGRES_POLLING_OK) {
        if (wanted == PGRES_POLLING_FAILED) throw failureOf(PQerrorMessage(connection.get()));
        const short event = wanted == PGRES_POLLING_READING ? POLLIN : POLLOUT;
        if (!waitFor(PQsocket(connection.get()), event, patience))
            throw ServerFailure(RecordFault::unreachable, "the server does not answer in time");
        if (receivedBy(connection.get()) > mostGreeting)
            throw ServerFailure(RecordFault::other, "what listens there is no PostgreSQL server");
        wanted = PQconnectPoll(connection.get());
    }
    if (!isSocketFolder(place.host) && !PQsslInUse(connection.get()))
        throw ServerFailure(RecordFault::noEncryption, "the server offers no TLS");
    PQsetnonblocking(connection.get(), 1);
    return connection;
}

Rows Connection::ask(const char* statement, const std::vector<std::string>& parameters,
                     const Patience& patience)
{
    std::vector<const char*> values;
    for (const auto& parameter : parameters) {
        if (parameter.find('\0') != parameter.npos)
            throw ServerFailure(RecordFault::other, "a text holds U+0000, which PostgreSQL does not take");
        values.push_back(parameter.c_str());
    }
    received_ = receivedBy(connection_.get());
    if (!PQsendQueryParams(connection_.get(), statement, static_cast<int>(values.size()), nullptr,
                           values.data(), nullptr, nullptr, 0))
        fail();
    return answer(patience);
}

void Connection::run(const std::string& statements, const Patience& patience)
{
    received_ = receivedBy(connection_.get());
    if (!PQsendQuery(connection_.get(), statements.c_str())) fail();
    answer(patience);
}

bool Connection::isUsable() const
{
    pollfd source{PQsocket(connection_.get()), POLLIN, 0};
    return PQtransactionStatus(connection_.get()) == PQTRANS_IDLE && poll(&source, 1, 0) == 0;
}

bool Connection::isSuperuser() const
{
    const auto* told = PQparameterStatus(connection_.get(), "is_superuser");
    return told && std::string_view(told) == "on";
}

Rows Connection::answer(const Patience& patience)
{
    try {
        flush(patience);
        return collected(patience);
    } catch (...) {
        const auto state = PQtransactionStatus(connection_.get());
        if (state == PQTRANS_ACTIVE || state == PQTRANS_UNKNOWN) abandon();
        throw;
    }
}

/// What the server has not received yet it shall not receive later: nothing more is sent.
void Connection::abandon() noexcept
{
    const linger none{.l_onoff = 1, .l_linger = 0};
    setsockopt(PQsocket(connection_.get()), SOL_SOCKET, SO_LINGER, &none, sizeof none);
    connection_.reset();
}

/// Of the last statement that gave rows, once the server has ended its answer.
Rows Connection::collected(const Patience& patience)
{
    Handle<PGresult, PQclear> last;
    std::optional<ServerFailure> refusal;
    while (true) {
        while (PQisBusy(connection_.get())) receive(patience);
        Handle<PGresult, PQclear> next(PQgetResult(connection_.get()));
        if (!next) break;
        const auto status = PQresultStatus(next.get());
        if (status == PGRES_TUPLES_OK || status == PGRES_COMMAND_OK || status == PGRES_EMPTY_QUERY) {
            last = std::move(next);
            continue;
        }
        if (!refusal) refusal = failureOf(PQresultErrorMessage(next.get()));
        if (status == PGRES_FATAL_ERROR) continue;
        connection_.reset(); // it begins to copy, which nobody asked for and nothing would end
        throw ServerFailure(RecordFault::other, "the server's answer makes no sense");
    }
    if (refusal) throw ServerFailure(*refusal);
    return Rows(last.release());
}

void Connection::flush(const Patience& patience)
{
    for (int left = PQflush(connection_.get()); left != 0; left = PQflush(connection_.get())) {
        if (left < 0) fail();
        waitFor(PQsocket(connection_.get()), POLLIN | POLLOUT, patience);
        // A server that has something to say first would not read on before that.
        consume();
        if (steady_clock::now() >= patience.deadline)
            throw ServerFailure(RecordFault::slow, "the server does not take a request in time");
    }
}

void Connection::receive(const Patience& patience)
{
    // TLS may hold what libpq has not taken yet, and of that the socket tells nothing.
    constexpr milliseconds longestWait{100};
    const auto slice = std::min(patience.deadline, steady_clock::now() + longestWait);
    waitFor(PQsocket(connection_.get()), POLLIN, {slice, patience.interruption});
    consume();
    if (PQisBusy(connection_.get()) && steady_clock::now() >= patience.deadline)
        throw ServerFailure(RecordFault::slow, "the server does not answer in time");
}

void Connection::consume()
{
    if (!PQconsumeInput(connection_.get())) fail();
    if (receivedBy(connection_.get()) - received_ > mostAnswer)
        throw ServerFailure(RecordFault::other, "the server answers more than can be");
}

void Connection::fail()
{
    const auto failure = failureOf(PQerrorMessage(connection_.get()));
    connection_.reset();
    throw ServerFailure(failure);
}

std::string Connection::quotedName(const std::string& name) const
{
    const Text quoted(PQescapeIdentifier(connection_.get(), name.data(), name.size()));
    if (!quoted) throw failureOf(PQerrorMessage(connection_.get()));
    return quoted.get();
}

std::string Connection::quotedText(const std::string& text) const
{
    const Text quoted(PQescapeLiteral(connection_.get(), text.data(), text.size()));
    if (!quoted) throw failureOf(PQerrorMessage(connection_.get()));
    return quoted.get();
}

std::string Connection::encrypted(const std::string& password, const std::string& user) const
{
    const Text kept(
        PQencryptPasswordConn(connection_.get(), password.c_str(), user.c_str(), "scram-sha-256"));
    if (!kept) throw failureOf(PQerrorMessage(connection_.get()));
    return kept.get();
}

} // namespace velmora::postgresql
