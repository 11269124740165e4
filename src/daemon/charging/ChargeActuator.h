// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/ChargePolicy.h"
#include "charging/DriverFamily.h"
#include "platform/Complaints.h"
#include "platform/Log.h"
#include "power/PowerSupplyReader.h"
#include "power/Sysfs.h"

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
    /// Absent where it cannot be read. Of a fixed limit that is on: what it surely does.
    std::optional<Thresholds> inForce{};
    /// False where the driver has a charge type that obeys thresholds, and another one is active.
    bool isObeyed = true;

    /// `written` was taken without an error, and the driver reports `shown`: the best it can do, or a
    /// firmware that was not listening.
    struct Deviation {
        Thresholds written;
        Thresholds shown;
        friend bool operator==(const Deviation&, const Deviation&) = default;
    };
    std::optional<Deviation> deviation{};

    /// `wanted` as this charger can take it.
    Thresholds fitted(Thresholds wanted) const;
    /// Whether nothing need be written for `wanted`; true where nothing can be, and where it `deviates`.
    bool holds(const Thresholds& wanted) const;
    /// Whether it holds what its driver made of `wanted`, which is something else.
    bool deviates(const Thresholds& wanted) const;
};

/// The only writer under /sys. It may be held for seconds by firmware that does not answer: it belongs to a
/// worker, and to one thread at a time.
///
/// Values are fitted to what the driver takes, down to a limit that is on or off, written only where they
/// differ, in an order that the driver accepts from what it holds now and that never passes through 100 %,
/// read back, and put back as a pair where the second half failed.
class ChargeActuator {
public:
    /// What one call of `apply` or `settle` did.
    struct Outcome {
        std::vector<BatteryCharger> chargers; ///< as they are afterwards
        std::vector<std::string> changes;     ///< sentences; empty where nothing had to be written
        bool isSettling = false;              ///< `settle` is to be called in a moment
        bool isRefused = false;               ///< a value could not be written; the log says why
    };

    ChargeActuator(Sysfs sysfs, Log& log) : sysfs_(std::move(sysfs)), complaints_(log, "ChargeActuator") {}

    /// The chargers of `batteries`, as they were read.
    std::vector<BatteryCharger> inspect(const std::vector<BatteryReading>& batteries);

    /// Makes the chargers of `batteries`, the names of supplies, hold `wanted`. `afresh`, as after a start, a
    /// plug or a resume: also where the driver had made something else of it before, and where it reads right
    /// by a driver that shows only what was last sent.
    Outcome apply(const std::vector<std::string>& batteries, const Thresholds& wanted, bool afresh);

    /// Ends an `apply` after which a value did not read back as written: some controllers take a moment. What
    /// reads differently still is a deviation.
    Outcome settle();

private:
    /// The files of one battery, and what they held.
    struct Files {
        std::filesystem::path folder;
        ChargeAttributes attributes;

        std::filesystem::path start() const { return folder / attributes.startFile; }
        std::filesystem::path end() const { return folder / attributes.endFile; }
    };

    /// A write of which the result is not clear yet.
    struct Pending {
        Thresholds aim;
        BatteryCharger before;
    };

    struct Family {
        ChargeControl control = ChargeControl::none;
        const DriverFamily* family = nullptr;
    };

    const DriverFamily& familyOf(const std::string& name, const ChargeAttributes& attributes);
    BatteryCharger inspect(const std::string& name, const ChargeAttributes& attributes);
    Files read(const std::string& name);
    void apply(const std::string& name, const Thresholds& wanted, bool afresh, Outcome& outcome);
    void conclude(const Pending& write, Outcome& outcome);
    bool write(const Files& files, const BatteryCharger& before, const std::optional<Thresholds>& from,
               const Thresholds& to);
    bool writePair(const Files& files, const DriverFamily& family, const std::optional<Thresholds>& from,
                   const Thresholds& to);
    bool write(const std::filesystem::path& file, const std::string& text);
    bool write(const std::filesystem::path& file, int value) { return write(file, std::to_string(value)); }

    Sysfs sysfs_;
    Complaints complaints_;
    std::vector<std::string> batteries_;                  // of the last `apply`
    std::map<std::string, Pending, std::less<>> pending_; // by supply, as the next two
    std::map<std::string, BatteryCharger::Deviation, std::less<>> deviations_;
    std::map<std::string, Family, std::less<>> families_;      // while it can be told anything
    std::map<std::string, std::string, std::less<>> offWords_; // of a fixed limit, as it last was off
};

} // namespace velmora
