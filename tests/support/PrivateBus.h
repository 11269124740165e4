// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "TemporaryFolder.h"

#include <string>
#include <string_view>
#include <sys/types.h>

namespace velmora {

/// A system bus of one's own: a dbus-daemon in a temporary folder, ready when the constructor returns, gone
/// with the object. While it lives DBUS_SYSTEM_BUS_ADDRESS names it. Anyone may connect, own names and send,
/// unless told otherwise.
class PrivateBus {
public:
    /// `policy` is added to the default one, in the words of dbus-daemon's configuration.
    explicit PrivateBus(std::string_view policy = "");
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    const std::string& address() const { return address_; }

    /// Ends the bus now; its clients see it hang up.
    void stop();

private:
    TemporaryFolder folder_;
    std::string address_;
    pid_t process_ = -1;
};

} // namespace velmora
