// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/RedirectListener.h"

#include "base/Wipe.h"
#include "identity/openid/PeerOwner.h"

#include <algorithm>
#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <system_error>
#include <utility>

namespace velmora::openid {

namespace {

using namespace std::chrono;

constexpr std::size_t mostVisits = 32;
constexpr std::size_t mostBytes = 32'768; ///< of a request: browsers send cookies of all of 127.0.0.1's ports
constexpr auto visitPatience = 10s;
constexpr int backlog = 128;

[[noreturn]] void fail(const char* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

FileDescriptor listening()
{
    FileDescriptor made(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_in any{};
    any.sin_family = AF_INET;
    any.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (!made || bind(made.get(), reinterpret_cast<const sockaddr*>(&any), sizeof(any)) != 0 ||
        listen(made.get(), backlog) != 0)
        fail("listening on 127.0.0.1");
    return made;
}

int portOf(int socket)
{
    sockaddr_in own{};
    socklen_t size = sizeof(own);
    if (getsockname(socket, reinterpret_cast<sockaddr*>(&own), &size) != 0) fail("getsockname");
    return ntohs(own.sin_port);
}

/// For HTML, between tags and within quotes.
std::string escaped(std::string_view text)
{
    std::string safe;
    for (const char c : text) {
        if (c == '&')
            safe += "&amp;";
        else if (c == '<')
            safe += "&lt;";
        else if (c == '>')
            safe += "&gt;";
        else if (c == '"')
            safe += "&quot;";
        else
            safe += c;
    }
    return safe;
}

std::string htmlOf(const ResultPage& page)
{
    const char* const mark = page.kind == ResultPage::Kind::signedIn ? "\u2713" : "\u2717";
    return "<!DOCTYPE html>\n<html>\n<head><meta charset=\"utf-8\"><title>Velmora</title>"
           "<meta name=\"viewport\" content=\"width=device-width\">"
           "<meta name=\"color-scheme\" content=\"light dark\"></head>\n<body>\n<h1>Velmora</h1>\n"
           "<p role=\"status\"><span aria-hidden=\"true\">" +
           std::string(mark) + " </span>" + escaped(page.text) + "</p>\n</body>\n</html>\n";
}

/// Nothing of it runs, loads, is stored, shown within another page, or told to the next one.
std::string headOf(const std::string& status, const std::string& type, std::size_t length)
{
    return "HTTP/1.1 " + status + "\r\nContent-Type: " + type +
           "; charset=utf-8\r\nContent-Length: " + std::to_string(length) +
           "\r\nConnection: close\r\nCache-Control: no-store\r\nReferrer-Policy: no-referrer\r\n"
           "X-Content-Type-Options: nosniff\r\n"
           "Content-Security-Policy: default-src 'none'; base-uri 'none'; form-action 'none'; "
           "frame-ancestors 'none'\r\n";
}

/// Sends an answer, which is less than any socket's buffer, and hangs up. What has come meanwhile is taken
/// first: a connection that is closed with bytes unread is reset, and the answer may be lost.
void send(FileDescriptor connection, const std::string& answer)
{
    std::string unread(mostBytes, '\0');
    while (recv(connection.get(), unread.data(), unread.size(), MSG_DONTWAIT | MSG_TRUNC) == mostBytes)
        continue;
    ::send(connection.get(), answer.data(), answer.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
}

std::string refusal(Stray stray)
{
    const auto text = [](const std::string& status, const std::string& more = {}) {
        return headOf(status, "text/plain", status.size()) + more + "\r\n" + status;
    };
    switch (stray) {
    case Stray::method:
        return text("405 Method Not Allowed", "Allow: GET, HEAD\r\n");
    case Stray::path:
        return text("404 Not Found");
    case Stray::head:
        return headOf("200 OK", "text/html", 0) + "\r\n";
    case Stray::background:
        return text("403 Forbidden");
    case Stray::malformed:
    case Stray::state:
        break;
    }
    return text("400 Bad Request");
}

std::string tooLarge()
{
    return headOf("431 Request Header Fields Too Large", "text/plain", 0) + "\r\n";
}

} // namespace

RedirectListener::RedirectListener()
    : socket_(listening()),
      address_("http://127.0.0.1:" + std::to_string(portOf(socket_.get())) + "/callback")
{
}

RedirectListener::Visit::Visit(FileDescriptor accepted, steady_clock::time_point end)
    : connection(std::move(accepted)), deadline(end)
{
    request.reserve(mostBytes); // it grows without leaving copies behind
}

RedirectListener::Visit::~Visit()
{
    wipe(request);
}

std::optional<Redirect> RedirectListener::wait(const std::string& state, steady_clock::time_point deadline,
                                               int interruption)
{
    while (steady_clock::now() < deadline) {
        const auto ready = waited(deadline, interruption);
        if (ready[0].revents) break;
        for (std::size_t i = 0; i < visits_.size(); ++i)
            if (auto redirect = ready[i + 2].revents ? serve(visits_[i], state) : std::nullopt)
                return redirect;
        if (ready[1].revents) admit();
        const auto isOver = [now = steady_clock::now()](const Visit& visit) {
            return !visit.connection || visit.deadline <= now;
        };
        std::erase_if(visits_, isOver);
    }
    return std::nullopt;
}

std::vector<pollfd> RedirectListener::waited(steady_clock::time_point deadline, int interruption) const
{
    std::vector<pollfd> sources{{interruption, POLLIN, 0}, {socket_.get(), POLLIN, 0}};
    for (const auto& visit : visits_) {
        sources.push_back({visit.connection.get(), POLLIN, 0});
        deadline = std::min(deadline, visit.deadline);
    }
    const auto left = std::max(ceil<milliseconds>(deadline - steady_clock::now()), milliseconds(0));
    if (poll(sources.data(), sources.size(), static_cast<int>(left.count())) < 0) {
        if (errno != EINTR) fail("poll");
        for (auto& source : sources) source.revents = 0;
    }
    return sources;
}

void RedirectListener::admit()
{
    FileDescriptor connection(accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!connection) {
        // Out of descriptors, most likely. The call stays where it is and would be found again at once.
        if (errno != EAGAIN && errno != ECONNABORTED && errno != EINTR) poll(nullptr, 0, 50);
        return;
    }
    if (ownerOfPeer(connection.get()) != geteuid()) {
        ++foreign_;
        return;
    }
    if (visits_.size() == mostVisits) visits_.erase(visits_.begin()); // the one that has been idle longest
    visits_.emplace_back(std::move(connection), steady_clock::now() + visitPatience);
}

std::optional<Redirect> RedirectListener::serve(Visit& visit, const std::string& state)
{
    auto& request = visit.request;
    const auto known = request.size();
    request.resize(mostBytes);
    const auto count = recv(visit.connection.get(), request.data() + known, mostBytes - known, MSG_DONTWAIT);
    const int failure = errno;
    request.resize(known + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count < 0 && (failure == EAGAIN || failure == EINTR)) return std::nullopt;
    if (count <= 0) {
        visit.connection.close();
        return std::nullopt;
    }
    const auto end = request.find("\r\n\r\n", known < 3 ? 0 : known - 3);
    if (end != std::string::npos) return answered(visit, std::string_view(request).substr(0, end), state);
    if (request.size() == mostBytes) send(std::move(visit.connection), tooLarge());
    return std::nullopt;
}

std::optional<Redirect> RedirectListener::answered(Visit& visit, std::string_view head,
                                                   const std::string& state)
{
    auto found = readRedirect(head, state);
    wipe(visit.request);
    if (const auto* stray = std::get_if<Stray>(&found)) {
        wrongStates_ += *stray == Stray::state ? 1 : 0;
        background_ += *stray == Stray::background ? 1 : 0;
        send(std::move(visit.connection), refusal(*stray));
        return std::nullopt;
    }
    browser_ = std::move(visit.connection);
    return std::get<Redirect>(std::move(found));
}

void RedirectListener::answer(const ResultPage& page)
{
    const auto html = htmlOf(page);
    if (browser_) send(std::move(browser_), headOf("200 OK", "text/html", html.size()) + "\r\n" + html);
    socket_.close();
    visits_.clear();
}

std::string RedirectListener::strays() const
{
    std::string text;
    const auto add = [&text](const char* what, std::size_t count) {
        if (count > 0) text += (text.empty() ? "" : ", ") + (what + std::to_string(count));
    };
    add("connections of other users closed: ", foreign_);
    add("redirects of other sign-ins refused: ", wrongStates_);
    add("redirects that a browser followed unasked refused: ", background_);
    return text;
}

} // namespace velmora::openid
