// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SystemTest.h"

#include "history/HistoryCodec.h"

#include <cmath>
#include <csignal>
#include <nlohmann/json.hpp>
#include <random>

namespace velmora {
namespace {

/// The daemon is killed, again and again, while somebody changes settings and the charger comes and goes.
class CrashTest : public SystemTest {
protected:
    /// Every message carries a limit of its own, by which it is known again.
    static double limitOf(int message) { return 20 + message / 128.0; }
    static int messageOf(double limit) { return static_cast<int>(std::lround((limit - 20) * 128)); }

    /// The number of the message whose settings are on the disk; -1 where that file is not whole. Before the
    /// first there is no file.
    int stored() const
    {
        const auto text = folder.read(state() / "settings.json");
        if (text.empty()) return std::filesystem::exists(state() / "settings.json") ? -1 : 0;
        const auto document = nlohmann::json::parse(text, nullptr, false);
        if (document.is_discarded() || document.value("version", 0) != 2) return -1;
        const auto limit = document["settings"]["customChargeLimit"].get<double>();
        return limit == 80 && sent < messageOf(80) ? 0 : messageOf(limit);
    }

    /// A sample of history for each.
    void flipCharger() const
    {
        static bool isCharging = false;
        isCharging = !isCharging;
        const std::filesystem::path battery = tree() / "class/power_supply/BAT0";
        folder.write(battery / "status", isCharging ? "Charging\n" : "Discharging\n");
        folder.write(battery / "uevent", "POWER_SUPPLY_NAME=BAT0\n");
    }

    int sent = 0;
};

TEST_F(CrashTest, TwoHundredKillsLoseNothingThatWasStored)
{
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto upTo = [&random](int most) { return std::uniform_int_distribution(0, most)(random); };
    layLaptop();
    std::size_t samples = 0;
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const int before = stored();
        startDaemon();
        ASSERT_EQ(messageOf(peer.state()->customChargeLimit), before == 0 ? messageOf(80) : before);
        ASSERT_GE(peer.history()->size(), samples);
        for (int message = upTo(20); message >= 0; --message) {
            peer.send({.customChargeLimit = limitOf(++sent)});
            if (message % 4 == 0) flipCharger();
            loop.runOnce(std::chrono::milliseconds{upTo(2)});
        }
        daemon->signal(SIGKILL);
        ASSERT_EQ(daemon->wait(), 128 + SIGKILL);
        ASSERT_GE(stored(), before);
        ASSERT_LE(stored(), sent);
        const auto file = folder.read(state() / "history.json");
        const auto history = decodeHistory(file);
        ASSERT_TRUE(history || file.empty()) << file;
        if (history) samples = history->size();
    }
    EXPECT_GT(samples, 0U);
    EXPECT_GT(stored(), 0);
    startDaemon();
    ASSERT_TRUE(peer.set({.customChargeLimit = 60}));
    EXPECT_TRUE(becomes(58, 60));
    stopDaemon();
    for (const auto& file : std::filesystem::directory_iterator(state()))
        EXPECT_EQ(file.path().string().find("broken"), std::string::npos) << file.path();
}

} // namespace
} // namespace velmora
