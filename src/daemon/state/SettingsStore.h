// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/StateFile.h"
#include "charging/ChargeEventRules.h"
#include "charging/FirstHeld.h"
#include "charging/QuickCharge.h"
#include "state/LatestValue.h"
#include "state/UserSettings.h"
#include "wire/VelmoraProtocol.h"

#include <atomic>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

/// What the daemon keeps over restarts, the history aside.
struct DaemonState {
    ChargingSettings settings{}; ///< the machine's
    UserSettings::Entries users{};
    QuickCharge::State quickCharge = QuickCharge::State::off;
    QuickCharge::Cause quickChargeCause = QuickCharge::Cause::person;
    /// The charger's own limit was looked at once, or a client has set one since.
    bool hasAdoptedLimit = false;
    ManualCharging manual{};
    FirstHeld::Entries firstHeld{};
    /// At which level the firmware's own limit was seen to hold: a text of `FixedLimit`, or empty.
    std::string heldLevel{};
    ChargeEventRules::Memory told{};
    /// A pause for heat may be in force: noted before the charger is told.
    bool isPausedForHeat = false;

    /// The last message of each client, and the bus on which their names mean something.
    std::string busId{};
    std::vector<std::pair<std::string, ChargingSettings>> callers{};

    friend bool operator==(const DaemonState&, const DaemonState&) = default;
};

/// settings.json in the state directory.
class SettingsStore {
public:
    SettingsStore(std::filesystem::path path, const Clock& clock, Log& log)
        : file_(std::move(path), clock, log)
    {
    }

    /// Whether the last save failed: what was to be saved is in memory alone. Any thread.
    bool hasFailed() const { return hasFailed_; }

    /// Defaults where there is no file. A file that is not this program's, torn, or holds a value that cannot
    /// be is set aside, and what in it is good is taken.
    DaemonState load();
    /// The same, leaving the file as it is: for who is not the daemon.
    DaemonState peek();
    bool save(const DaemonState& state);

    /// Leaves `state` for a worker to save, in place of one that still waits: a disk slower than the clients
    /// makes no queue. Whether `saveNewest` has to be called for it. Any thread, as the next one.
    bool put(const DaemonState& state) { return waiting_.put(state); }
    void saveNewest()
    {
        if (const auto state = waiting_.take()) save(*state);
    }

private:
    StateFile file_;
    LatestValue<DaemonState> waiting_;
    std::atomic<bool> hasFailed_ = false;
};

/// The file's form, and back; the second of the pair says what was wrong, empty for nothing.
std::string encodeState(const DaemonState& state);
/// A file of the version before, in which all settings were the machine's, is read too: its notice switches
/// and low-battery limit become those of `owner`, the only user but root who could have set them.
std::pair<DaemonState, std::string> decodeState(std::string_view bytes, uid_t owner);

} // namespace velmora
