// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "TemporaryFolder.h"
#include "base/FileDescriptor.h"

#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>

namespace velmora {

/// A bus that is not there and, once it listens, takes connections and says nothing.
class DeafBus {
public:
    std::string address() const { return "unix:path=" + path_; }
    int descriptor() const { return listener_.get(); }

    void listen() const
    {
        sockaddr_un place{.sun_family = AF_UNIX, .sun_path = {}};
        path_.copy(place.sun_path, sizeof place.sun_path - 1);
        if (bind(listener_.get(), reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0 ||
            ::listen(listener_.get(), 8) != 0)
            throw std::system_error(errno, std::generic_category(), path_);
    }

private:
    TemporaryFolder folder_;
    std::string path_ = folder_.path() / "bus";
    FileDescriptor listener_{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

} // namespace velmora
