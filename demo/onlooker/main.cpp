// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LinuxPlatform.h"
#include "ModelSentence.h"
#include "XPCClient.h"

#include <csignal>
#include <cstdio>

namespace velmora {
namespace {

/// The real link, for somebody who only looks: a model sends its settings with every change, this one must
/// not.
class SilentLink final : public DaemonClientProtocol {
public:
    explicit SilentLink(LinuxPlatform& platform) : link_(platform.loop(), platform.clock(), platform.log())
    {
        link_.onStateChange = [this](const HSBatteryState& state) {
            if (onStateChange) onStateChange(state);
        };
    }

    void fetchCurrentState(StateHandler completion) override
    {
        link_.fetchCurrentState(std::move(completion));
    }
    void fetchHistory(HistoryHandler completion) override { link_.fetchHistory(std::move(completion)); }
    void updateSettings(const ChargingSettings&) override {}

private:
    XPCClient link_;
};

/// Prints the model's sentence whenever it reads differently, once a turn of the loop.
class Onlooker {
public:
    Onlooker(LinuxPlatform& platform, BatteryModel& model) : platform_(platform), model_(model)
    {
        state_ = model_.percentage.observe([this](double) { hasState_ = true; });
        changes_ = model_.willChange.observe([this] {
            if (isDue_) return;
            isDue_ = true;
            platform_.loop().post([this] { speak(); });
        });
    }

private:
    void speak()
    {
        isDue_ = false;
        if (!hasState_) return; // what a model shows before it has heard anything is no news
        const std::string now = sentence(model_);
        if (now == said_) return;
        said_ = now;
        std::printf("velmora: %s\n", now.c_str());
        std::fflush(stdout);
    }

    LinuxPlatform& platform_;
    BatteryModel& model_;
    Subscription state_;
    Subscription changes_;
    bool hasState_ = false;
    bool isDue_ = false;
    std::string said_;
};

int lookOn()
{
    LinuxPlatform platform("velmora-onlooker");
    platform.loop().stopOn({SIGTERM, SIGINT});
    BatteryModel model(std::make_shared<SilentLink>(platform), nullptr);
    const Onlooker onlooker(platform, model);
    platform.loop().run();
    return 0;
}

} // namespace
} // namespace velmora

int main()
{
    return velmora::lookOn();
}
