// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Observable.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// How much a notice may interrupt, in rising order.
enum class InterruptionLevel : std::uint8_t { passive, active, timeSensitive, critical };

/// A button on a notice.
struct NotificationAction {
    std::string identifier;
    std::string title;

    friend bool operator==(const NotificationAction&, const NotificationAction&) = default;
};

/// One notice, to be delivered at once.
struct NotificationRequest {
    std::string identifier; ///< a new notice with the same one takes the place of the one that stands
    std::string title;      ///< plain text, as is the body
    std::string body;
    std::optional<InterruptionLevel> interruptionLevel{}; ///< absent: the platform's default
    bool hasDefaultSound = true;
    std::vector<NotificationAction> actions{};

    friend bool operator==(const NotificationRequest&, const NotificationRequest&) = default;
};

/// What a person did with a notice.
struct NotificationResponse {
    static constexpr auto click = "default"; ///< the action of a click on the notice itself

    std::string request; ///< identifier of the notice
    std::string action;  ///< identifier of the action
    std::string token{}; ///< the desktop's leave to take the focus; empty where it gave none
};

/// Whoever shows the notices, as far as is known now.
struct NotificationServer {
    std::string name{};                ///< empty: none runs
    bool isStartable = false;          ///< none runs, and the first notice starts one
    std::optional<bool> isInhibited{}; ///< do not disturb; absent where the server does not say

    friend bool operator==(const NotificationServer&, const NotificationServer&) = default;
};

/// The desktop's notices.
class NotificationCenter {
public:
    /// Any thread. `error` is a description in the platform's words; absent for success.
    using Authorization = std::function<void(bool isGranted, const std::optional<std::string>& error)>;
    using Completion = std::function<void(const std::optional<std::string>& error)>;

    virtual ~NotificationCenter() = default;

    /// Asks for leave to show alerts, sounds and badges. Answered once, when there is somebody to show them:
    /// at log-in that may take a while. Any thread.
    virtual void requestAuthorization(Authorization answered) = 0;

    /// Delivers a notice now. Any thread.
    virtual void add(NotificationRequest request, Completion completed) = 0;

    /// Takes back notices that are not delivered yet. Any thread, like the next.
    virtual void removePending(std::vector<std::string> identifiers) = 0;
    /// Takes notices from the screen and from the list that the desktop keeps.
    virtual void removeDelivered(std::vector<std::string> identifiers) = 0;

    /// Main thread only, like all that follow.
    [[nodiscard]] virtual Subscription
    observeResponses(std::function<void(const NotificationResponse&)> responded) = 0;

    virtual NotificationServer server() const = 0;
    [[nodiscard]] virtual Subscription observeServer(std::function<void()> changed) = 0;
};

} // namespace velmora
