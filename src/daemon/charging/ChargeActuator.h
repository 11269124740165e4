// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/ChargePolicy.h"
#include "charging/DriverFamily.h"
#include "platform/Complaints.h"
#include "platform/Log.h"
#include "power/PowerSupplyReader.h"
#include "power/Sysfs.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// What the charger of one battery holds now.
struct BatteryCharger {
    std::string name; ///< of the supply, "BAT0"
    ChargeControl control = ChargeControl::none;
    const DriverFamily* family = nullptr;
    std::optional<Thresholds> inForce{}; ///< absent where it cannot be read
    /// False where the driver has a charge type that obeys thresholds, and another one is active.
    bool isObeyed = true;

    /// A driver that made something else of `written` and was believed: it showed `shown`.
    struct Settled {
        Thresholds written;
        Thresholds shown;
        friend bool operator==(const Settled&, const Settled&) = default;
    };
    std::optional<Settled> settled{};

    /// `wanted` as this charger can take it.
    Thresholds fitted(Thresholds wanted) const;
    /// Whether nothing need be written for `wanted`; true where nothing can be.
    bool holds(const Thresholds& wanted) const;
};

/// The only writer under /sys. It may be held for seconds by firmware that does not answer: it belongs to a
/// worker, and to one thread at a time.
///
/// Values are fitted to what the driver takes, written only where they differ, in an order that the driver
/// accepts from what it holds now and that never passes through 100 %, read back, and put back as a pair
/// where the second half failed.
class ChargeActuator {
public:
    /// What one call of `apply` did.
    struct Outcome {
        std::vector<BatteryCharger> chargers; ///< as they are afterwards
        std::vector<std::string> changes;     ///< sentences; empty where nothing had to be written
    };

    /// `settle`: how long to wait before a second look at a value that does not read back as written; some
    /// controllers take a moment.
    ChargeActuator(Sysfs sysfs, Log& log, std::chrono::milliseconds settle = std::chrono::milliseconds{300});

    std::vector<BatteryCharger> inspect();

    /// Makes every internal battery's charger hold `wanted`. `afresh`: also where its driver had made
    /// something else of it before, as after a start, a plug or a resume.
    Outcome apply(const Thresholds& wanted, bool afresh);

private:
    struct Files {
        std::filesystem::path folder;
        std::filesystem::path start; ///< empty where there is none
        std::filesystem::path end;
    };

    std::vector<Files> files();
    const DriverFamily& familyOf(const Files& files);
    std::optional<int> percentAt(const std::filesystem::path& file) const;
    BatteryCharger inspect(const Files& files);
    void apply(const Files& files, const Thresholds& wanted, Outcome& outcome);
    bool writePair(const Files& files, const std::optional<Thresholds>& from, const Thresholds& to);
    bool write(const std::filesystem::path& file, const std::string& text);
    bool write(const std::filesystem::path& file, int value) { return write(file, std::to_string(value)); }
    Thresholds readBack(const Files& files, const Thresholds& written);
    bool obeysThresholds(const Files& files) const;

    Sysfs sysfs_;
    PowerSupplyReader supplies_;
    Complaints complaints_;
    std::chrono::milliseconds settle_;
    std::map<std::string, BatteryCharger::Settled, std::less<>> settled_; // by supply
    std::map<std::string, const DriverFamily*, std::less<>> families_; // by supply, while it has thresholds
};

} // namespace velmora
