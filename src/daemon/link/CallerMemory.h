// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/VelmoraProtocol.h"

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace velmora {

/// What each client said last. A client sends all its settings whenever anything changes, a pushed state
/// included, and never reads some of them back: only the fields in which a message differs from that client's
/// last one are its wish. Without this two clients would flip each other's settings for ever. The
/// settings that a client was given by GetSettings count as its last message, too.
class CallerMemory {
public:
    /// A message whose sender's right to it is being asked for.
    struct Question {
        ChargingSettings message;
        bool mayInteract; ///< a person is asked for a password, if need be

        friend bool operator==(const Question&, const Question&) = default;
    };
    struct LastMessages {
        std::optional<uid_t> user{}; ///< not known of one remembered from another run
        std::optional<ChargingSettings> accepted{};
        std::optional<ChargingSettings> refused{};
        std::optional<Question> pending{};
    };

    /// What `caller` said last; nothing for one that was not heard yet. Valid until the next call of `of`.
    LastMessages& of(std::string_view caller);
    void forget(std::string_view caller);

    std::vector<std::string> connectionsOf(uid_t user) const;

    /// The last accepted message of each, oldest caller first: what has to outlive a restart of the daemon,
    /// since the clients and their names on the bus do.
    std::vector<std::pair<std::string, ChargingSettings>> accepted() const;

private:
    std::vector<std::pair<std::string, LastMessages>> callers_; // a handful; oldest first
};

} // namespace velmora
