// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/CloudDatabase.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace velmora {

/// Where the records of a user's machines live.
struct RecordPlace {
    enum class Kind : std::uint8_t {
        thisComputer, ///< a file of the user's
        server,       ///< PostgreSQL
    };
    /// By what a server proves who it is. Without either nothing is sent to it.
    enum class Trust : std::uint8_t {
        channelBinding, ///< it knows the password, and nobody listens in between; needs no certificate
        certificate,    ///< one that this system trusts, for the server's name
    };

    Kind kind = Kind::thisComputer;
    std::string host{};
    std::uint16_t port = 5432;
    std::string database = "velmora";
    std::string user{};
    Trust trust = Trust::channelBinding;
    /// A file of the user's alone that has the password, for machines without a secret store; empty: none was
    /// chosen.
    std::string passwordFile{};

    friend bool operator==(const RecordPlace&, const RecordPlace&) = default;
};

inline constexpr std::array recordPlaceKindTexts{"this-computer", "server"};
inline constexpr std::array recordTrustTexts{"channel-binding", "certificate"};

/// Opens record stores. Main thread only.
class RecordStores {
public:
    /// Gives the password that the user keeps for the server, or an empty text. Asked on a store's own thread
    /// each time that it connects, where it may take seconds; so it may outlive who gave it.
    using Password = std::function<std::string()>;
    /// `detail`: what the store's own software says, for the log; empty where it has said nothing.
    using Tested = std::function<void(RecordFault fault, const std::string& detail)>;

    virtual ~RecordStores() = default;

    /// The store there; it connects at its first use. Null where Velmora's part for such a store is not
    /// installed. It ends without waiting for anything.
    virtual std::shared_ptr<CloudDatabase> open(const RecordPlace& place, Password password) = 0;

    /// Looks whether `place` would do: connects, looks who the user is, saves a record of its own, reads it
    /// and removes it. Answers once, on the main thread, in bounded time and never from inside the call.
    virtual void test(const RecordPlace& place, Password password, Tested tested) = 0;
};

} // namespace velmora
