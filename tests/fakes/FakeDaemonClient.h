// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/VelmoraProtocol.h"

#include <deque>

namespace velmora {

/// A daemon that records what it is sent and answers when the test wants it to, or never.
class FakeDaemonClient final : public DaemonClientProtocol {
public:
    std::vector<ChargingSettings> sent;
    std::size_t persons = 0;                    ///< of them
    std::deque<StateHandler> stateRequests;     ///< not answered yet, oldest first
    std::deque<HistoryHandler> historyRequests; ///< not answered yet, oldest first

    void fetchCurrentState(StateHandler completion) override
    {
        stateRequests.push_back(std::move(completion));
    }
    void fetchHistory(HistoryHandler completion) override
    {
        historyRequests.push_back(std::move(completion));
    }
    void updateSettings(const ChargingSettings& settings) override
    {
        sent.push_back(settings);
        if (isPersons_) ++persons;
    }
    void asPerson(const std::function<void()>& act) override
    {
        isPersons_ = true;
        act();
        isPersons_ = false;
    }

    /// Answers the oldest request on the calling thread, as a connection would; there must be one.
    void answer(const HSBatteryState& state) { take(stateRequests)(state); }
    void answer(std::vector<HSHistorySnapshot> history) { take(historyRequests)(std::move(history)); }

    /// A push, on the main thread.
    void push(const HSBatteryState& state)
    {
        if (onStateChange) onStateChange(state);
    }

private:
    template <typename Handler>
    static Handler take(std::deque<Handler>& requests)
    {
        Handler oldest = std::move(requests.at(0));
        requests.pop_front();
        return oldest;
    }

    bool isPersons_ = false;
};

} // namespace velmora
