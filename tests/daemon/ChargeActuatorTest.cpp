// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/ChargeActuator.h"

#include "FuseTree.h"
#include "LaptopKinds.h"
#include "ManualLoop.h"
#include "ManualQueue.h"
#include "RecordingLog.h"
#include "TemporaryFolder.h"
#include "charging/ChargerKeeper.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <set>

namespace velmora {
namespace {

using namespace std::chrono_literals;

constexpr auto supplies = "class/power_supply/";

/// A laptop whose driver answers writes as a kernel's would: mounted, since plain files refuse nothing.
struct ChargeActuatorTest : testing::Test {
    /// A test is skipped here, before it begins, or not at all.
    void SetUp() override { begin(laptopOfKind("thresholds").value()); }

    void begin(const char* kind, const ThresholdDriver* driver, const std::string& module = "")
    {
        auto make = laptopOfKind(kind).value();
        make.driver = driver;
        if (!module.empty()) make.machine.values["module/" + module + "/refcnt"] = "0";
        begin(std::move(make));
    }

    void begin(LaptopMake make)
    {
        actuator.reset();
        tree.reset();
        laptop.emplace(std::move(make));
        const auto root = folder.path() / "sys";
        std::filesystem::create_directories(root);
        std::string whyNot;
        tree = FuseTree::mount(*laptop, {.folder = root}, whyNot);
        if (!tree) GTEST_SKIP() << whyNot;
        actuator.emplace(Sysfs(root), log);
        batteries.clear();
        for (const auto& battery : PowerSupplyReader(Sysfs(root), log).read().batteries)
            batteries.push_back(battery.name);
    }

    ChargeActuator::Outcome apply(const Thresholds& wanted, bool afresh)
    {
        auto outcome = actuator->apply(batteries, wanted, afresh);
        return outcome.isSettling ? actuator->settle() : outcome;
    }

    /// Brings the driver to `wanted` without the actuator; what it made of that.
    ChargeThresholds hold(ChargeThresholds wanted)
    {
        laptop->with([&](SimulatedLaptop& one) {
            const auto files = std::string(supplies) + "BAT0/charge_control_";
            one.store(files + "end_threshold", "100");
            one.store(files + "start_threshold", std::to_string(wanted.start));
            one.store(files + "end_threshold", std::to_string(wanted.end));
            one.takeWrites();
        });
        return held();
    }

    ChargeThresholds held(std::size_t battery = 0)
    {
        return laptop->with(
            [&](const SimulatedLaptop& one) { return one.look().batteries[battery].thresholds; });
    }

    std::vector<SimulatedLaptop::Write> writes()
    {
        return laptop->with([](SimulatedLaptop& one) { return one.takeWrites(); });
    }

    TemporaryFolder folder;
    RecordingLog log;
    std::optional<SharedLaptop> laptop;
    std::unique_ptr<FuseTree> tree;
    std::optional<ChargeActuator> actuator;
    std::vector<std::string> batteries;
};

/// The largest value that is not above `wanted` among those that the driver can be brought to, by `set`; else
/// the smallest.
template <typename Set>
int nearest(int wanted, Set set)
{
    std::set<int> taken;
    for (int value = 0; value <= 100; ++value)
        if (const std::optional<int> made = set(value)) taken.insert(*made);
    if (taken.empty()) return 0;
    const auto above = taken.upper_bound(wanted);
    return above == taken.begin() ? *above : *std::prev(above);
}

/// The best that the driver itself can be brought to.
ChargeThresholds best(const ThresholdDriver& driver, ChargeThresholds wanted)
{
    const int end = nearest(wanted.end, [&](int value) {
        ChargeThresholds tried;
        return driver.set(tried, Threshold::end, value) == 0 ? std::optional(tried.end) : std::nullopt;
    });
    const int start = nearest(wanted.start, [&](int value) {
        ChargeThresholds tried;
        driver.set(tried, Threshold::end, end);
        const bool isTaken = driver.set(tried, Threshold::start, value) == 0 && tried.end == end;
        return isTaken ? std::optional(tried.start) : std::nullopt;
    });
    return {start, end};
}

// Each driver compares, clamps and couples in its own way; from wherever it stands, every state has to get
// through in one go.
TEST_F(ChargeActuatorTest, EveryDriverIsBroughtFromWhereverItStandsToWhereverItCanBe)
{
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"thinkpad", "thinkpad_acpi", "thresholds"},
        {"huawei", "huawei_wmi", "thresholds"},
        {"dell", "dell_laptop", "thresholds"},
        {"msi", "msi_ec", "thresholds"},
        {"asus", "asus_wmi", "end-only"},
        {"lg", "lg_laptop", "end-only"},
    };
    const ChargeThresholds pairs[] = {{0, 100}, {99, 100}, {95, 100}, {0, 60},  {58, 60}, {60, 70},
                                      {78, 80}, {40, 80},  {88, 98},  {48, 50}, {0, 20},  {18, 20}};
    for (const auto& [name, module, kind] : cases) {
        const auto& driver = *ThresholdDriver::named(name);
        begin(kind, &driver, module);
        for (const auto& before : pairs) {
            for (const auto& wanted : pairs) {
                const auto from = hold(before);
                SCOPED_TRACE(testing::Message() << name << ": from " << from.start << " " << from.end
                                                << " to " << wanted.start << " " << wanted.end);
                apply({wanted.start, wanted.end}, true);
                EXPECT_EQ(held(), best(driver, wanted));
                for (const auto& write : writes()) {
                    EXPECT_EQ(write.error, 0) << write.asked;
                    EXPECT_FALSE(write.threshold == Threshold::end && write.found == 100 && wanted.end < 100)
                        << "an unlimited moment";
                }
                apply({wanted.start, wanted.end}, false);
                EXPECT_TRUE(writes().empty()) << "nothing is written that is there already";
            }
        }
    }
    EXPECT_EQ(log.count(), 0U);
}

TEST_F(ChargeActuatorTest, ALimitOfTheFirmwaresOwnIsSwitchedOnForWhateverIsBelowFull)
{
    const std::string types = std::string(supplies) + "BAT0/charge_types";
    const std::string mode = "bus/platform/drivers/ideapad_acpi/VPC2004:00/conservation_mode";
    for (const auto& [kind, file, limit] : {std::tuple("conservation-mode", mode, ChargeThresholds{55, 60}),
                                            std::tuple("long-life", types, ChargeThresholds{75, 80})}) {
        SCOPED_TRACE(kind);
        begin(laptopOfKind(kind).value());
        for (const auto& [wanted, after, count] :
             {std::tuple(80, limit, 1U), std::tuple(50, limit, 0U), std::tuple(99, limit, 0U),
              std::tuple(100, ChargeThresholds{}, 1U), std::tuple(100, ChargeThresholds{}, 0U)}) {
            const auto outcome = apply({{}, wanted}, false);
            EXPECT_EQ(held(), after) << wanted;
            EXPECT_EQ(writes().size(), count) << wanted;
            EXPECT_EQ(outcome.changes.size(), count);
            EXPECT_EQ(outcome.chargers.at(0).family->name, "ideapad-laptop");
        }
    }
    laptop->with([&](SimulatedLaptop& one) { return one.store(types, "Fast"); });
    apply({{}, 80}, false);
    apply({{}, 100}, false);
    EXPECT_TRUE(laptop->with([&](const SimulatedLaptop& one) { return one.load(types).bytes; })
                    .starts_with("[Fast]"));
    // A switch that shows nonsense is switched all the same, and one that then cannot be read is no limit.
    auto make = laptopOfKind("conservation-mode").value();
    make.machine.values.erase(mode);
    make.machine.errors[mode] = EIO;
    begin(std::move(make));
    const auto outcome = apply({{}, 80}, false);
    EXPECT_EQ(held(), (ChargeThresholds{55, 60}));
    EXPECT_FALSE(outcome.chargers.at(0).inForce);
}

constexpr ThresholdDriver refusesStart{"refuses starts",
                                       [](ChargeThresholds& held, Threshold which, int value) {
                                           if (which == Threshold::start) return ENODEV;
                                           held.end = value;
                                           return 0;
                                       }};
constexpr ThresholdDriver refusesLowEnds{"refuses low ends",
                                         [](ChargeThresholds& held, Threshold which, int value) {
                                             if (which == Threshold::end && value < 50) return EINVAL;
                                             (which == Threshold::start ? held.start : held.end) = value;
                                             return 0;
                                         }};
constexpr ThresholdDriver dropsWrites{"drops writes", [](ChargeThresholds&, Threshold, int) { return 0; }};
constexpr ThresholdDriver knowsTwoEnds{"knows 80 and 100", [](ChargeThresholds& held, Threshold, int value) {
                                           held.end = value < 90 ? 80 : 100;
                                           return 0;
                                       }};

TEST_F(ChargeActuatorTest, AHalfFailedPairIsPutBack)
{
    const struct {
        const char* what;
        const ThresholdDriver& driver;
        ChargeThresholds from, wanted;
    } cases[] = {
        {"the end went first, the start is refused", refusesStart, {0, 60}, {78, 80}},
        {"the start went first, the end is refused", refusesLowEnds, {50, 60}, {38, 40}},
    };
    for (const auto& [what, driver, from, wanted] : cases) {
        SCOPED_TRACE(what);
        begin("thresholds", &driver);
        hold(from);
        log.clear();
        const auto outcome = apply({wanted.start, wanted.end}, true);
        EXPECT_TRUE(outcome.isRefused);
        EXPECT_TRUE(outcome.changes.empty());
        EXPECT_EQ(held(), from);
        EXPECT_EQ(writes().size(), 3U);
        for (int i = 0; i < 10; ++i) apply({wanted.start, wanted.end}, false);
        EXPECT_EQ(log.count("Cannot write"), 1U) << "said once";
    }
}

TEST_F(ChargeActuatorTest, ADriverThatMakesSomethingElseOfAValueIsBelievedUntilAFreshStart)
{
    const struct {
        const char* what;
        const ThresholdDriver& driver;
        int shown;
    } cases[] = {{"dropped", dropsWrites, 100}, {"rounded", knowsTwoEnds, 80}};
    for (const auto& [what, driver, shown] : cases) {
        SCOPED_TRACE(what);
        begin("end-only", &driver);
        log.clear();
        const auto outcome = apply({{}, 60}, false);
        EXPECT_EQ(outcome.chargers.front().inForce, (Thresholds{{}, shown}));
        EXPECT_EQ(writes().size(), 1U);
        for (int i = 0; i < 10; ++i) apply({{}, 60}, false);
        EXPECT_TRUE(writes().empty());
        EXPECT_EQ(log.count("the driver reports"), 1U);
        apply({{}, 60}, true);
        EXPECT_EQ(writes().size(), 1U);
    }
}

TEST_F(ChargeActuatorTest, WhatCannotBeReadIsWrittenAllTheSame)
{
    auto make = laptopOfKind("thresholds").value();
    for (const auto* file : {"BAT0/charge_control_start_threshold", "BAT0/charge_control_end_threshold"}) {
        make.machine.values.erase(std::string(supplies) + file);
        make.machine.errors[std::string(supplies) + file] = ENODATA;
    }
    begin(std::move(make));
    for (const ChargeThresholds wanted : {ChargeThresholds{78, 80}, {95, 100}, {0, 60}}) {
        SCOPED_TRACE(wanted.end);
        apply({wanted.start, wanted.end}, false);
        EXPECT_EQ(held(), wanted);
    }
}

TEST_F(ChargeActuatorTest, ABatteryThatRefusesDoesNotKeepTheOtherFromItsLimit)
{
    auto make = laptopOfKind("two-batteries").value();
    make.machine.errors[std::string(supplies) + "BAT0/charge_control_end_threshold"] = EIO;
    begin(std::move(make));
    apply({78, 80}, true);
    EXPECT_EQ(held(1), (ChargeThresholds{78, 80}));
}

TEST_F(ChargeActuatorTest, ADriverThatShowsWhatItWasSentIsSentItAgainAfterAFreshStart)
{
    begin("end-only", ThresholdDriver::named("asus"), "asus_wmi");
    apply({{}, 80}, true);
    writes();
    apply({{}, 80}, false);
    EXPECT_TRUE(writes().empty());
    apply({{}, 80}, true);
    EXPECT_EQ(writes().size(), 1U);
}

TEST_F(ChargeActuatorTest, AValueThatTheFirmwareIgnoredIsTriedAgainWithinMinutesAndEverMoreSeldom)
{
    const auto loop = std::make_shared<ManualLoop>();
    const ManualClock clock(loop);
    ManualQueue hardware;
    hardware.inlineWork = true;
    begin("end-only", &dropsWrites);
    ChargerKeeper keeper({*loop, clock, log, hardware, *actuator}, [](bool) {});
    ChargeDecision decision;
    decision.thresholds = Thresholds{{}, 60};
    const auto lookFor = [&](std::chrono::minutes time, std::chrono::minutes pause = 1min) {
        for (auto passed = 0min; passed < time; passed += pause) {
            PowerSupplyReader reader(Sysfs(folder.path() / "sys"), log);
            keeper.observe(actuator->inspect(reader.read().batteries));
            keeper.hold(decision);
            loop->advance(pause);
        }
        return writes().size();
    };
    EXPECT_EQ(lookFor(1min), 1U);
    EXPECT_EQ(lookFor(4min), 1U) << "tried again";
    EXPECT_LE(lookFor(24h, 10min), 30U) << "and not for ever as often";
    EXPECT_GE(lookFor(24h, 10min), 20U);
    EXPECT_EQ(log.count(), 1U);
}

/// Plain files, which show what was written.
struct ChargeTypes : testing::Test {
    ChargeTypes() { folder.write(battery / "type", "Battery\n"); }

    const std::filesystem::path battery = std::filesystem::path(supplies) / "BAT0";
    const TemporaryFolder folder;
    RecordingLog log;
    ChargeActuator actuator{Sysfs(folder.path()), log};
};

TEST_F(ChargeTypes, OfAnUnknownDriverHoldALevelThatNobodyKnows)
{
    folder.write(battery / "charge_types", "Standard [Long_Life]\n");
    folder.write("module/thinkpad_acpi/refcnt", "0\n");
    const auto charger = actuator.apply({"BAT0"}, {{}, 80}, true).chargers.at(0);
    EXPECT_EQ(charger.family->fixed, fixedLimit("unknown"));
    EXPECT_TRUE(charger.holds({{}, 50}));
    EXPECT_FALSE(charger.holds({{}, 100}));
}

TEST_F(ChargeTypes, AreSwitchedToTheOneThatObeysThresholds)
{
    folder.write(battery / "charge_control_end_threshold", "100\n");
    folder.write(battery / "charge_types", "[Fast] Standard Custom\n");
    actuator.apply({"BAT0"}, {{}, 100}, true);
    EXPECT_TRUE(folder.read(battery / "charge_types").starts_with("[Fast]")) << "no limit, no need";
    actuator.apply({"BAT0"}, {{}, 80}, true);
    EXPECT_TRUE(folder.read(battery / "charge_types").starts_with("Custom"));
}

} // namespace
} // namespace velmora
