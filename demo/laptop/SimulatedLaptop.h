// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "CapturedBattery.h"
#include "CapturedMachine.h"
#include "ChargeTypes.h"
#include "LaptopParts.h"
#include "LaptopPhysics.h"
#include "ThresholdDriver.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// A laptop as its captured files describe it.
struct LaptopMake {
    CapturedMachine machine;
    /// How writes to the thresholds are taken.
    const ThresholdDriver* driver = ThresholdDriver::named("thinkpad");
    /// What firmware holds while a limit of its own is on, by `conservation_mode` or the charge type
    /// Long_Life.
    ChargeThresholds fixed{.start = 55, .end = 60};
    /// Path of the thermal zone whose `temp` follows the processor; empty: all zones stay as captured.
    std::string heatedZone{};
};

/// A laptop in the words of its owner.
struct LaptopLook {
    struct Battery {
        std::string name; ///< of the supply
        std::string status;
        int percent = 0;
        double watts = 0; ///< positive into the battery
        ChargeThresholds thresholds{};
        int cycles = 0;
    };
    bool isPlugged = false;
    double load = 0; ///< watts
    std::vector<Battery> batteries;
};

/// A laptop that charges and drains on virtual time, seen through the files of sysfs: the captured ones, with
/// those that tell of its batteries, its charger and its heat brought to life. A file keeps its captured text
/// until what it tells has changed; one that could not be read stays unreadable.
///
/// Touches nothing outside itself. One thread at a time.
class SimulatedLaptop {
public:
    explicit SimulatedLaptop(const LaptopMake& make);

    /// Lets so many seconds pass.
    void advance(double seconds);
    /// The charger is put in or pulled out.
    void plug(bool isPlugged);
    /// What the machine itself consumes, in watts.
    void setLoad(double watts);
    /// Every battery is at so many percent now.
    void setLevel(double percent);
    /// Something keeps every battery at so many °C, or no longer.
    void setHeat(std::optional<double> celsius);
    /// Every battery has another full cycle behind it.
    void addCycle();

    LaptopLook look() const;

    /// Every file, by path below the root.
    std::vector<std::string> paths() const;
    /// Folders that are there though nothing may be in them: that of the supplies, and the loaded module of
    /// the driver that made the thresholds.
    std::vector<std::string> folders() const;
    bool has(const std::string& path) const;
    /// Whether the file's mode is 0644 rather than 0444.
    bool isWritable(const std::string& path) const;

    struct Loaded {
        std::string bytes; ///< with the final newline
        int error = 0;     ///< an errno
    };
    Loaded load(const std::string& path) const;

    /// A write as the driver would take it: 0 or an errno.
    int store(const std::string& path, std::string_view text);

    /// What was written to a threshold, and what a reader finds there afterwards; or to the switch of the
    /// firmware's own limit, and up to where it charges then.
    struct Write {
        std::string battery;
        Threshold threshold = Threshold::end;
        std::string asked;
        int error = 0;
        int found = 0; ///< percent
        bool isSwitch = false;
    };
    /// The writes since the last call, in their order.
    std::vector<Write> takeWrites();

    /// Supplies about which the kernel would have sent an event since the last call, chargers first: plugged
    /// or unplugged, another status, another percent. Never for a write. A supply with a file that fails
    /// otherwise than with ENODEV or ENODATA is silent, as the kernel then cannot describe it.
    std::vector<std::string> takeAnnouncements();

private:
    struct Battery {
        std::string name;
        CapturedBattery captured;
        std::string announced;   ///< status and percent, as last announced
        ChargeThresholds held{}; ///< as written, whether or not firmware obeys them
        ChargeTypes types{};
    };
    struct Place { ///< a path below class/power_supply, taken apart
        std::string supply;
        std::string name;
    };

    SimulatedLaptop(LaptopMake make, const LaptopParts& parts);
    void addEventFiles();
    static std::optional<Place> placeOf(std::string_view path);
    void bringToLife(std::size_t battery);
    int conserve(std::string_view text);
    void noteSwitch(std::size_t battery, std::string_view text, int error);
    int storeInto(std::size_t battery, Threshold which, std::string_view text);
    void obey(std::size_t battery);
    std::optional<std::size_t> batteryNamed(std::string_view supply) const;
    std::optional<std::string> live(const std::string& path) const;
    std::string uevent(const std::string& supply) const;
    void announce(const std::string& supply);
    void announceChanges();
    void announceBatteries();
    std::string digest(std::size_t battery) const;

    LaptopMake make_;
    std::vector<Battery> batteries_; // as in physics_, in the same order
    bool isConserving_ = false;
    std::vector<std::string> chargers_; // their `online` follows the plug
    LaptopPhysics physics_;
    std::map<std::string, std::string> told_; // what each live file told at first
    std::vector<Write> writes_;
    std::vector<std::string> announcements_;
};

} // namespace velmora
