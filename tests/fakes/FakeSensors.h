// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/PowerSources.h"
#include "platform/ThermalLevel.h"

namespace velmora {

/// A port that reads as the test sets it, and says so when the test wants it to.
template <typename Port, typename Reading>
class FakeSensor : public Port {
public:
    Reading now{};

    [[nodiscard]] Subscription observeChanges(std::function<void()> changed) override
    {
        return changes_.observe(std::move(changed));
    }

    /// The change signal, whether anything changed or not.
    void announce() { changes_.emit(); }

    void become(Reading next)
    {
        now = std::move(next);
        announce();
    }

private:
    Signal<> changes_;
};

struct FakeThermalLevel final : FakeSensor<ThermalLevel, int> {
    int level() override { return now; }
};

struct FakePowerSources final : FakeSensor<PowerSources, std::vector<PowerSourceDescription>> {
    int readings = 0; ///< how often somebody looked

    std::vector<PowerSourceDescription> descriptions() override
    {
        ++readings;
        return now;
    }
};

} // namespace velmora
