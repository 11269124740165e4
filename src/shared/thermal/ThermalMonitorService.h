// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/ThermalLevel.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace velmora {

/// Reports to one subscriber how hot the machine is. Delivers on every change signal and every `update`,
/// changed or not.
class ThermalMonitorService {
public:
    enum class ThermalState : std::uint8_t { nominal, fair, serious, critical };

    using Update = std::function<void(ThermalState)>;

    /// The state of a platform level; `nominal` for any level outside 0 to 3.
    static ThermalState thermalState(int level);
    /// "Nominal", "Fair", "Serious" or "Critical".
    static std::string_view rawValue(ThermalState state);
    /// Nothing for any text that is not exactly a raw value.
    static std::optional<ThermalState> thermalStateFromRawValue(std::string_view text);

    /// Registers for the platform's change signal; reads nothing yet.
    ThermalMonitorService();

    /// Keeps `onUpdate`, in place of any earlier one, and calls it once with the current state before
    /// returning.
    void startMonitoring(Update onUpdate);

    /// Reads the state and calls the subscriber, if there is one, on the caller's thread.
    void update();

private:
    struct Subscriber;
    std::shared_ptr<Subscriber> subscriber_;
    Subscription changes_;
};

} // namespace velmora
