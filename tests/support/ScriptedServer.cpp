// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ScriptedServer.h"

#include "base/Descriptor.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <list>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <set>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace velmora {

namespace {

using Socket = Descriptor<::close>;
using Answer = ScriptedServer::Answer;
using Manner = ScriptedServer::Manner;
using Request = ScriptedServer::Request;

std::string decoded(std::string_view text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            plain += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            plain += text[i] == '+' ? ' ' : text[i];
        }
    }
    return plain;
}

/// What stands behind that name, which is lower case, in the request's head.
std::string headerOf(const std::string& head, const std::string& name)
{
    std::string lower = head;
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
    const auto at = lower.find("\r\n" + name + ": ");
    if (at == lower.npos) return {};
    const auto begin = at + name.size() + 4;
    return head.substr(begin, head.find("\r\n", begin) - begin);
}

/// An empty method where the client has gone before.
Request received(int socket)
{
    std::string text;
    char bytes[4096];
    const auto readUntil = [&](const auto& isEnough) {
        while (!isEnough()) {
            const auto count = recv(socket, bytes, sizeof bytes, 0);
            if (count <= 0) return false;
            text.append(bytes, static_cast<std::size_t>(count));
        }
        return true;
    };
    if (!readUntil([&] { return text.find("\r\n\r\n") != text.npos; })) return {};
    const auto bodyAt = text.find("\r\n\r\n") + 4;
    const auto head = text.substr(0, bodyAt);
    const auto length = headerOf(head, "content-length");
    const std::size_t bodySize = length.empty() ? 0 : std::stoul(length);
    if (!readUntil([&] { return text.size() >= bodyAt + bodySize; })) return {};
    const auto target = head.substr(head.find(' ') + 1, head.find(" HTTP/") - head.find(' ') - 1);
    const auto query = std::min(target.find('?'), target.size());
    Request request{.method = head.substr(0, head.find(' ')),
                    .path = target.substr(0, query),
                    .parameters =
                        ScriptedServer::parametersOf(target.substr(std::min(query + 1, target.size()))),
                    .authorization = headerOf(head, "authorization"),
                    .body = text.substr(bodyAt, bodySize)};
    if (request.method == "POST") request.parameters.merge(ScriptedServer::parametersOf(request.body));
    return request;
}

bool sendAll(int socket, std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

std::string textOf(const Answer& answer)
{
    std::string text = "HTTP/1.1 " + std::to_string(answer.status) + " As told\r\n";
    for (const auto& header : answer.headers) text += header + "\r\n";
    if (answer.manner == Manner::endlessHeaders || answer.manner == Manner::endlessHeader) return text;
    if (answer.manner != Manner::endlessBody)
        text += "Content-Length: " + std::to_string(answer.body.size()) + "\r\n";
    if (answer.manner != Manner::keptOpen) text += "Connection: close\r\n";
    return text + "\r\n" + answer.body;
}

void sendForEver(int socket, const std::string& first, const std::string& more)
{
    bool isThere = sendAll(socket, first);
    while (isThere) isThere = sendAll(socket, more);
}

void sendSlowly(int socket, const std::string& text)
{
    for (const char c : text) {
        if (!sendAll(socket, {&c, 1})) return;
        std::this_thread::sleep_for(std::chrono::milliseconds{50});
    }
}

void awaitEnd(int socket)
{
    char byte = 0;
    while (recv(socket, &byte, 1, 0) > 0) {
    }
}

void reset(int socket)
{
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    setsockopt(socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

void give(int socket, const Answer& answer)
{
    const auto text = textOf(answer);
    const std::string many(1000, 'x');
    switch (answer.manner) {
    case Manner::whole:
    case Manner::keptOpen:
        sendAll(socket, text);
        break;
    case Manner::truncated:
        sendAll(socket, text.substr(0, text.size() - answer.body.size() / 2 - 1));
        break;
    case Manner::slow:
        sendSlowly(socket, text);
        break;
    case Manner::silent:
        awaitEnd(socket);
        break;
    case Manner::reset:
        reset(socket);
        break;
    case Manner::endlessHeaders:
        sendForEver(socket, text, "X-More: " + many + "\r\n");
        break;
    case Manner::endlessHeader:
        sendForEver(socket, text + "X-More: ", many);
        break;
    case Manner::endlessBody:
        sendForEver(socket, text, many);
        break;
    case Manner::raw:
        sendAll(socket, answer.body);
        break;
    }
}

} // namespace

struct ScriptedServer::State {
    State(Handler toCall, bool isFirst) : handler(std::move(toCall)), speaksFirst(isFirst) {}

    void listen();
    void accept();
    void serve(int socket);
    void close();

    const Handler handler;
    const bool speaksFirst;
    std::uint16_t port = 0;
    Socket listener;
    std::thread acceptor;
    std::mutex mutex;
    std::list<std::thread> workers; ///< guarded by the mutex, as what follows
    std::set<int> open;
    bool isClosing = false;
};

void ScriptedServer::State::listen()
{
    listener = Socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int yes = 1;
    setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    socklen_t size = sizeof address;
    if (bind(listener.get(), reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::listen(listener.get(), 64) != 0)
        throw std::system_error(errno, std::generic_category(), "No port for the server");
    getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &size);
    port = ntohs(address.sin_port);
    isClosing = false;
    acceptor = std::thread([this] { accept(); });
}

void ScriptedServer::State::accept()
{
    for (;;) {
        const int socket = accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(mutex);
        if (isClosing) {
            if (socket >= 0) ::close(socket);
            return;
        }
        if (socket < 0) continue;
        open.insert(socket);
        workers.emplace_back([this, socket] { serve(socket); });
    }
}

void ScriptedServer::State::serve(int socket)
{
    for (bool isOpen = true; isOpen;) {
        const auto request = speaksFirst ? Request{.method = "none"} : received(socket);
        const auto answer = request.method.empty() ? Answer{} : handler(request);
        if (!request.method.empty()) give(socket, answer);
        isOpen = !request.method.empty() && answer.manner == Manner::keptOpen;
    }
    const std::lock_guard lock(mutex);
    open.erase(socket);
    ::close(socket);
}

void ScriptedServer::State::close()
{
    if (!acceptor.joinable()) return;
    {
        const std::lock_guard lock(mutex);
        isClosing = true;
        for (const int socket : open) shutdown(socket, SHUT_RDWR);
    }
    shutdown(listener.get(), SHUT_RDWR);
    acceptor.join();
    listener = Socket();
    for (auto& worker : workers) worker.join();
    workers.clear();
}

ScriptedServer::ScriptedServer(Handler handler, bool speaksFirst)
    : state_(std::make_unique<State>(std::move(handler), speaksFirst))
{
    state_->listen();
}

ScriptedServer::~ScriptedServer()
{
    state_->close();
}

std::uint16_t ScriptedServer::port() const
{
    return state_->port;
}

void ScriptedServer::goDown()
{
    state_->close();
}

void ScriptedServer::comeUp()
{
    if (!state_->acceptor.joinable()) state_->listen();
}

std::map<std::string, std::string> ScriptedServer::parametersOf(std::string_view query)
{
    std::map<std::string, std::string> parameters;
    while (!query.empty()) {
        const auto field = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(field.size() + 1, query.size()));
        const auto sign = std::min(field.find('='), field.size());
        parameters[decoded(field.substr(0, sign))] = decoded(field.substr(std::min(sign + 1, field.size())));
    }
    return parameters;
}

} // namespace velmora
