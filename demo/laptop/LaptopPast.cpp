// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopPast.h"

#include "history/HistoryCodec.h"
#include "thermal/ThermalMonitorService.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <span>

namespace velmora::past {

namespace {

using ThermalState = ThermalMonitorService::ThermalState;

using duration::day;
using duration::hour;
using duration::minute;
constexpr int days = 62;

constexpr double wearADay = 0.02;    // percentage points, used or not
constexpr double wearACycle = 0.035; // percentage points
constexpr int limit = 80;
constexpr int limitGap = 2;

/// Some hours of a day in which the laptop is on.
struct Stretch {
    double from; ///< hour of the day
    double to;
    double watts;
    bool isPlugged;
    int limit = past::limit;
};
constexpr Stretch atTheDesk[] = {{8.5, 11.5, 11, true}, {11.5, 12.3, 9, false}, {12.3, 17.5, 14, true}};
constexpr Stretch onTheRoad[] = {
    {7, 8.2, 9, true, 100}, {8.5, 11.8, 8, false}, {13, 13.25, 62, false}, {14, 17, 12, true}};
constexpr Stretch atHome[] = {
    {10, 11.5, 7, false}, {11.5, 13, 50, true}, {19.5, 21.7, 6, false}, {21.7, 22.5, 9, true}};
constexpr Stretch atRest[] = {{20, 20.5, 7, true}};
constexpr std::span<const Stretch> week[] = {atTheDesk, atTheDesk, onTheRoad, atTheDesk,
                                             atTheDesk, atHome,    atRest};

/// What its battery holds of what it was made for, in percent; 100 where its files do not say.
double healthNow(const CapturedMachine& machine, const LaptopParts& parts)
{
    double full = 0;
    double design = 0;
    for (const auto& battery : parts.batteries) {
        const Folder folder(machine, supplyPath(battery.name));
        const std::string family = folder.has("energy_full") ? "energy_full" : "charge_full";
        full += folder.number(family, 0);
        design += folder.number(family + "_design", 0);
    }
    const double health = design > 0 ? 100 * full / design : 0;
    return health > 0 && health <= 150 ? health : 100;
}

std::vector<SimulatedBattery> packs(const LaptopParts& parts)
{
    std::vector<SimulatedBattery> result;
    for (const auto& battery : parts.batteries) result.emplace_back(battery.captured.make());
    return result;
}

/// A laptop that lives, and the daemon that looks at it as it would: while something moves.
class Life {
public:
    Life(const LaptopMake& make, Date born)
        : machine_(make.machine),
          parts_(LaptopParts::of(machine_)),
          laptop_(packs(parts_), true, 0),
          now_(born)
    {
    }

    /// Until `end`.
    void live(std::span<const Stretch> plan, Date midnight, Date end)
    {
        for (const auto& stretch : plan) {
            const double late = vary(-0.3, 0.3);
            now_ = std::clamp(midnight + (stretch.from + late) * hour, now_, std::max(now_, end));
            spend(stretch, std::min(end, midnight + (stretch.to + late) * hour));
        }
        daysLived_ += 1;
    }

    /// The past as seen from its `end`, at which the daemon looks once more.
    Samples told(Date end) &&
    {
        now_ = std::max(now_, end);
        look();
        const double health = healthNow(machine_, parts_);
        const double beginning = health + wear();
        for (auto& sample : samples_)
            sample.health = std::min(beginning + sample.health, std::max(health, 100.0));
        const auto most = static_cast<std::ptrdiff_t>(history_limits::maximumLength);
        if (std::ssize(samples_) > most) samples_.erase(samples_.begin(), samples_.end() - most);
        return std::move(samples_);
    }

private:
    void spend(const Stretch& stretch, Date end)
    {
        for (std::size_t index = 0; index < parts_.batteries.size(); ++index) {
            const Folder folder(machine_, supplyPath(parts_.batteries[index].name));
            if (folder.has("charge_control_end_threshold"))
                laptop_.batteries()[index].thresholds = {stretch.limit - limitGap, stretch.limit};
        }
        laptop_.setLoad(stretch.watts * vary(0.8, 1.2));
        laptop_.plug(stretch.isPlugged);
        for (bool wasMoving = true; now_ < end; now_ = now_ + minute) {
            laptop_.advance(minute);
            if (isMoving() || wasMoving) look();
            wasMoving = isMoving();
        }
    }

    bool isMoving() const
    {
        return std::ranges::any_of(laptop_.batteries(), [](const auto& one) { return one.watts() != 0; });
    }

    void look()
    {
        double full = 0;
        double held = 0;
        bool isCharging = false;
        for (const auto& battery : laptop_.batteries()) {
            full += battery.fullWattHours();
            held += battery.wattHours();
            isCharging = isCharging || battery.watts() > 0;
        }
        const HSHistorySnapshot candidate{now_, 100 * held / full, error_ - wear(),
                                          std::string(ThermalMonitorService::rawValue(heat())), isCharging};
        if (!isWorthKeeping(samples_.empty() ? nullptr : &samples_.back(), candidate)) return;
        samples_.push_back(candidate);
        error_ = 0.95 * error_ + vary(-0.1, 0.1);
    }

    /// Throttling keeps it from worse.
    ThermalState heat() const
    {
        return laptop_.processorCelsius() < LaptopPhysics::passiveTrip - 5 ? ThermalState::nominal
                                                                           : ThermalState::fair;
    }

    /// Since its birth, in percentage points.
    double wear() const
    {
        double cycles = 0;
        for (std::size_t index = 0; index < parts_.batteries.size(); ++index)
            cycles += laptop_.batteries()[index].cycles() - parts_.batteries[index].captured.make().cycles;
        return wearADay * daysLived_ + wearACycle * cycles / static_cast<double>(parts_.batteries.size());
    }

    /// The distributions of the standard library differ from one to the next.
    double vary(double lowest, double highest)
    {
        const double chance = static_cast<double>(random_() - random_.min()) /
                              static_cast<double>(random_.max() - random_.min());
        return lowest + (highest - lowest) * chance;
    }

    const CapturedMachine& machine_;
    LaptopParts parts_;
    LaptopPhysics laptop_;
    Date now_;
    double daysLived_ = 0;
    double error_ = 0; ///< of the gauge's belief in what the battery holds, in percentage points
    std::minstd_rand random_{2026};
    Samples samples_; ///< health less what it was at birth
};

} // namespace

Samples lived(const LaptopMake& make, Date now, double utcOffset)
{
    const auto end = now + -history_limits::minimumSpacing;
    const double today = std::floor((end.unixSeconds() + utcOffset) / day);
    const auto midnight = [&](double ago) { return Date::fromUnix((today - ago) * day - utcOffset); };
    if (LaptopParts::of(make.machine).batteries.empty()) return {};
    Life life(make, midnight(days));
    for (int ago = days; ago >= 0; --ago) {
        const auto weekday =
            static_cast<std::size_t>(std::fmod(today - ago + 3, 7)); // 1970 began on a Thursday
        life.live(week[weekday], midnight(ago), end);
    }
    return std::move(life).told(end);
}

} // namespace velmora::past
