// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/postgresql/HostAddresses.h"

#include "base/FileDescriptor.h"
#include "base/Handle.h"
#include "records/postgresql/ServerFailure.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <memory>
#include <netdb.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>
#include <utility>

namespace velmora::postgresql {

namespace {

using namespace std::chrono;

constexpr std::size_t mostAddresses = 4;

/// What the asking thread and the one that looks up have in common: the answer is the latter's until it is
/// there.
struct Lookup {
    FileDescriptor done{eventfd(0, EFD_CLOEXEC)};
    std::atomic<bool> isThere = false;
    int failure = 0;
    std::vector<std::string> addresses{};
};

std::string numericText(const addrinfo& address)
{
    std::array<char, NI_MAXHOST> text{};
    const bool isTold = getnameinfo(address.ai_addr, address.ai_addrlen, text.data(), text.size(), nullptr, 0,
                                    NI_NUMERICHOST) == 0;
    return isTold ? text.data() : "";
}

void lookUp(const std::string& host, Lookup& lookup)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_ADDRCONFIG;
    Handle<addrinfo, freeaddrinfo> list;
    lookup.failure = getaddrinfo(host.c_str(), nullptr, &hints, out(list));
    for (const auto* one = list.get(); one && lookup.addresses.size() < mostAddresses; one = one->ai_next)
        if (auto text = numericText(*one); !text.empty()) lookup.addresses.push_back(std::move(text));
    lookup.isThere = true;
    eventfd_write(lookup.done.get(), 1);
}

std::vector<std::string> answerOf(const std::string& host, Lookup& lookup)
{
    if (lookup.failure == 0 && !lookup.addresses.empty()) return std::move(lookup.addresses);
    const bool isKnownToBeNone = lookup.failure == EAI_NONAME || lookup.failure == EAI_NODATA;
    throw ServerFailure(isKnownToBeNone ? RecordFault::unknownHost : RecordFault::unreachable,
                        "the host " + host + " cannot be looked up: " +
                            (lookup.failure ? gai_strerror(lookup.failure) : "it has no address"));
}

} // namespace

bool waitFor(int descriptor, short events, const Patience& patience)
{
    while (true) {
        const auto left = ceil<milliseconds>(patience.deadline - steady_clock::now());
        std::array<pollfd, 2> sources{{{descriptor, events, 0}, {patience.interruption, POLLIN, 0}}};
        const int ready = poll(sources.data(), sources.size(), std::max(0, static_cast<int>(left.count())));
        if (ready < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category(), "poll");
        if (sources[1].revents) throw Interrupted{};
        if (ready > 0) return true;
        if (ready == 0 && left <= left.zero()) return false;
    }
}

std::vector<std::string> addressesOf(const std::string& host, const Patience& patience)
{
    const auto lookup = std::make_shared<Lookup>();
    std::thread([host, lookup] { lookUp(host, *lookup); }).detach();
    if (!waitFor(lookup->done.get(), POLLIN, patience) || !lookup->isThere)
        throw ServerFailure(RecordFault::unreachable,
                            "the host " + host + " cannot be looked up: no answer in time");
    return answerOf(host, *lookup);
}

} // namespace velmora::postgresql
