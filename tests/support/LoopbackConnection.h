// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"

#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <sys/socket.h>

namespace velmora {

/// Of "http://127.0.0.1:PORT/...".
inline std::uint16_t portOf(const std::string& url)
{
    return static_cast<std::uint16_t>(std::stoi(url.substr(std::string("http://127.0.0.1:").size())));
}

/// A connection to a server on 127.0.0.1, by an IPv4 socket or as programs do it that have IPv6 sockets only.
class LoopbackConnection {
public:
    explicit LoopbackConnection(std::uint16_t port, bool isIPv6 = false)
        : socket_(::socket(isIPv6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in plain{};
        plain.sin_family = AF_INET;
        plain.sin_port = htons(port);
        plain.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        sockaddr_in6 mapped{};
        mapped.sin6_family = AF_INET6;
        mapped.sin6_port = htons(port);
        inet_pton(AF_INET6, "::ffff:127.0.0.1", &mapped.sin6_addr);
        isConnected =
            isIPv6 ? connect(socket_.get(), reinterpret_cast<const sockaddr*>(&mapped), sizeof mapped) == 0
                   : connect(socket_.get(), reinterpret_cast<const sockaddr*>(&plain), sizeof plain) == 0;
    }

    void say(std::string_view text) const { send(socket_.get(), text.data(), text.size(), MSG_NOSIGNAL); }

    /// All that comes until the other end hangs up.
    std::string heard() const
    {
        std::string text;
        std::array<char, 4096> part{};
        for (ssize_t count = 0; (count = recv(socket_.get(), part.data(), part.size(), 0)) > 0;)
            text.append(part.data(), static_cast<std::size_t>(count));
        return text;
    }

    bool isConnected = false;

private:
    FileDescriptor socket_;
};

} // namespace velmora
