// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/PeerOwner.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <netinet/in.h>
#include <sstream>
#include <string>
#include <sys/socket.h>

namespace velmora::openid {

namespace {

/// One end of a connection as the kernel's lists have it: the address as 32-bit words in this machine's
/// order.
std::string listed(const sockaddr_in& end, const char* before)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s%08X:%04X", before, static_cast<unsigned>(end.sin_addr.s_addr),
                  static_cast<unsigned>(ntohs(end.sin_port)));
    return text.data();
}

/// What an IPv4 address in an IPv6 socket begins with, "::ffff:".
const char* mappedPrefix()
{
    return htonl(1) == 1 ? "00000000000000000000FFFF" : "0000000000000000FFFF0000";
}

/// A line is "number: local remote state queues timer retries uid ...".
std::optional<uid_t> ownerIn(const char* list, const std::string& local, const std::string& remote)
{
    std::ifstream file(list);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string number, from, to, skipped;
        words >> number >> from >> to;
        if (from != local || to != remote) continue;
        for (int i = 0; i < 4; ++i) words >> skipped;
        if (uid_t user = 0; words >> user) return user;
    }
    return std::nullopt;
}

} // namespace

std::optional<uid_t> ownerOfPeer(int connection)
{
    sockaddr_in here{}, there{};
    socklen_t hereSize = sizeof(here), thereSize = sizeof(there);
    if (getsockname(connection, reinterpret_cast<sockaddr*>(&here), &hereSize) != 0 ||
        getpeername(connection, reinterpret_cast<sockaddr*>(&there), &thereSize) != 0)
        return std::nullopt;
    // The lists are read page by page while others open and close connections: a line can be missed once.
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (auto user = ownerIn("/proc/net/tcp", listed(there, ""), listed(here, ""))) return user;
        const auto* const mapped = mappedPrefix();
        if (auto user = ownerIn("/proc/net/tcp6", listed(there, mapped), listed(here, mapped))) return user;
    }
    return std::nullopt;
}

} // namespace velmora::openid
