// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "CapturedMachine.h"
#include "LoopTest.h"
#include "Peer.h"
#include "PrivateBus.h"
#include "Process.h"
#include "TemporaryFolder.h"

#include <optional>
#include <string>

namespace velmora {

/// velmorad as systemd runs it, over a tree of its own, on a bus of its own; its log is shown where a test
/// fails.
class SystemTest : public LoopTest {
protected:
    void TearDown() override
    {
        daemon.reset();
        if (HasFailure()) std::fputs(log().c_str(), stderr);
    }

    static CapturedMachine captured(const std::string& name)
    {
        return CapturedMachine::load(std::filesystem::path(VELMORA_MACHINES) / (name + ".sysfs"));
    }

    /// A plain tree of a laptop with two thresholds that nobody has set yet.
    void layLaptop() const
    {
        auto machine = captured("thinkpad-x1-extreme-held-at-limit");
        machine.values["class/power_supply/BAT0/charge_control_start_threshold"] = "0";
        machine.values["class/power_supply/BAT0/charge_control_end_threshold"] = "100";
        machine.layInto(tree());
    }

    Process::Environment environment() const
    {
        return {{"VELMORA_SYSFS", tree()},
                {"STATE_DIRECTORY", state()},
                {"XDG_DATA_HOME", folder.path() / "data"},
                {"XDG_CONFIG_HOME", folder.path() / "config"},
                {"VELMORA_LOG", "stderr"}};
    }

    void startDaemon()
    {
        daemon.emplace(VELMORA_BIN "/velmorad", environment(), folder.path() / "log");
        ASSERT_TRUE(eventually([this] { return peer.state().has_value(); }));
    }

    /// The daemon is asked to end, which it does well.
    void stopDaemon() { EXPECT_EQ(daemon->terminate(), 0); }

    std::filesystem::path tree() const { return folder.path() / "sys"; }
    std::filesystem::path state() const { return folder.path() / "state"; }
    std::string log() const { return folder.read("log"); }

    /// A threshold as the tree holds it; -1 where it cannot be read.
    int percent(const std::string& file) const
    {
        const auto text = folder.read(tree() / "class/power_supply/BAT0" / file);
        return text.empty() ? -1 : std::atoi(text.c_str());
    }
    int start() const { return percent("charge_control_start_threshold"); }
    int end() const { return percent("charge_control_end_threshold"); }
    bool becomes(int wantedStart, int wantedEnd)
    {
        return eventually([&] { return start() == wantedStart && end() == wantedEnd; });
    }

    PrivateBus bus;
    TemporaryFolder folder;
    Peer peer{loop};
    std::optional<Process> daemon;
};

} // namespace velmora
