// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "report/Watch.h"

#include "bus/NameOwner.h"
#include "output/WatchLine.h"
#include "wire/ChargerInterface.h"

#include <cstdio>
#include <utility>

namespace velmora::ctl {

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds untilChange = 24h;
/// One that is there and does not answer announces nothing either.
constexpr std::chrono::milliseconds untilRetry = 10s;

/// Whether what was last printed may be out of date.
class News {
public:
    explicit News(sd_bus* bus)
        : owner_(
              bus, wire::serviceName, [this] { isThere_ = true; }, [this] { isThere_ = true; }),
          pushes_(dbus::match(bus,
                              {.sender = wire::serviceName,
                               .path = wire::objectPath,
                               .interface = wire::client_protocol::interface},
                              dbus::serve<News, &News::signalled>, this)),
          changes_(dbus::match(bus,
                               {.sender = wire::serviceName,
                                .path = wire::objectPath,
                                .interface = "org.freedesktop.DBus.Properties",
                                .arg0 = wire::charger::interface},
                               dbus::serve<News, &News::signalled>, this))
    {
    }

    bool take() { return std::exchange(isThere_, false); }

private:
    int signalled(sd_bus_message* signal)
    {
        if (owner_.sent(signal)) isThere_ = true;
        return 0;
    }

    bool isThere_ = true;
    NameOwner owner_;
    dbus::Slot pushes_, changes_;
};

std::optional<Snapshot> glance(DaemonLink& link)
try {
    return link.glance();
} catch (const Failure&) {
    return std::nullopt;
}

} // namespace

ExitStatus watch(EventLoop& loop, DaemonLink& link, bool isJson)
{
    News news(link.bus());
    std::string printed;
    for (bool isAnswered = true;;) {
        if (news.take() || !isAnswered) {
            const auto now = glance(link);
            isAnswered = now.has_value();
            const auto line = watchLine(now, isJson);
            if (line != printed && (std::puts(line.c_str()) < 0 || std::fflush(stdout) != 0))
                return ExitStatus::failed;
            printed = line;
        }
        loop.runOnce(isAnswered ? untilChange : untilRetry);
    }
}

} // namespace velmora::ctl
