// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/PowerSources.h"
#include "platform/Preferences.h"
#include "platform/ServiceManager.h"
#include "platform/ThermalLevel.h"

#include <map>
#include <string>
#include <vector>

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

/// Preferences that last as long as the test.
struct FakePreferences final : Preferences {
    std::map<std::string, bool, std::less<>> values;
    std::map<std::string, std::string, std::less<>> texts;
    int assignments = 0;

    bool boolean(std::string_view key) const override
    {
        const auto found = values.find(key);
        return found != values.end() && found->second;
    }
    void set(std::string_view key, bool value) override
    {
        ++assignments;
        values.insert_or_assign(std::string(key), value);
    }
    std::string text(std::string_view key) const override
    {
        const auto found = texts.find(key);
        return found == texts.end() ? "" : found->second;
    }
    void setText(std::string_view key, std::string_view value) override
    {
        ++assignments;
        texts.insert_or_assign(std::string(key), std::string(value));
    }
};

/// A service manager whose prompts stand until the test answers them.
struct FakeServiceManager final : ServiceManager {
    Status now = Status::notRegistered;
    std::vector<Completion> prompts;

    Status status() override { return now; }
    void registerService(Completion completion) override { prompts.push_back(std::move(completion)); }
};

} // namespace velmora
