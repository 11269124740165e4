// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "FakeDaemonClient.h"
#include "FakePlatform.h"
#include "LoopTest.h"
#include "PrivateBus.h"
#include "bus/DBus.h"
#include "wire/ModelFace.h"

#include <cstdlib>
#include <string>

namespace velmora {

/// A session bus of one's own, with the application's end and a stranger's on it, both served by `loop`.
class SessionTest : public LoopTest {
protected:
    SessionTest()
    {
        setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
        application = dbus::openSessionBus(loop);
        stranger = dbus::openSessionBus(loop);
        own(application.get(), wire::face::serviceName);
    }
    ~SessionTest() override { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }

    static void own(sd_bus* connection, const char* name)
    {
        dbus::check(sd_bus_request_name(connection, name, 0), name);
    }

    /// A call of the stranger's to the application; the test appends the arguments.
    dbus::Message call(const char* interface, const char* member,
                       const char* path = wire::face::objectPath) const
    {
        return dbus::newCall(stranger.get(), wire::face::serviceName, path, interface, member);
    }

    /// The stranger's; `lastError` is the name of the error that the answer is.
    dbus::Message ask(const dbus::Message& message)
    {
        auto reply = answer(stranger.get(), message);
        const auto* error = sd_bus_message_get_error(reply.get());
        lastError = error ? error->name : "";
        return reply;
    }

    PrivateBus bus;
    dbus::Bus application, stranger;
    std::string lastError;
};

} // namespace velmora
