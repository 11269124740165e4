// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopKinds.h"
#include "PlainTree.h"
#include "RecordingLog.h"
#include "TemporaryFolder.h"
#include "power/DeviceAttributes.h"

#include <gtest/gtest.h>

namespace velmora {

namespace {

namespace fs = std::filesystem;

struct Tree : testing::Test {
    TemporaryFolder folder;
    SharedLaptop laptop{*laptopOfKind("thresholds")};
    TreeOptions options{.folder = folder.path() / "sys", .isPlain = true};
    std::string note;

    void SetUp() override { fs::create_directories(options.folder); }
};

TEST_F(Tree, UsesNoFolderThatHoldsAnythingElse)
{
    const auto keepsake = options.folder / "class/keepsake";
    folder.write(keepsake, "dear");
    EXPECT_THROW(showTree(laptop, options, note), std::runtime_error);
    EXPECT_EQ(folder.read(keepsake), "dear");

    fs::remove_all(options.folder / "class");
    folder.write(options.folder / ".velmora-laptop/fresh", ""); // as a killed run leaves it
    folder.write(options.folder / "class/power_supply/OLD/type", "Battery\n");
    auto tree = showTree(laptop, options, note);
    EXPECT_FALSE(fs::exists(options.folder / "class/power_supply/OLD"));
    EXPECT_TRUE(fs::exists(options.folder / "class/power_supply/BAT0"));
    tree.reset();
    EXPECT_TRUE(fs::is_empty(options.folder));
}

TEST_F(Tree, ADriverThatIsLoadedAnewIsReadAnew)
{
    options.isPlain = false;
    const auto tree = showTree(laptop, options, note);
    if (!note.empty()) GTEST_SKIP() << note;
    RecordingLog log;
    Complaints complaints(log, "test");
    const std::string folderOfBattery = "class/power_supply/BAT0";
    DeviceAttributes battery(options.folder, folderOfBattery, complaints, DeviceAttributes::Memory::always);
    const auto whole = *laptopOfKind("thresholds");
    auto bare = whole;
    for (const auto* name : {"charge_control_start_threshold", "charge_control_end_threshold", "cycle_count"})
        bare.machine.values.erase(folderOfBattery + '/' + name);
    const auto reads = [&] {
        return battery.integer("cycle_count") == 118 && battery.integer("charge_control_end_threshold");
    };
    ASSERT_TRUE(reads());
    laptop.probe(whole);
    EXPECT_TRUE(reads()) << "what was open is opened anew";
    laptop.probe(bare);
    EXPECT_EQ(battery.text("cycle_count"), std::nullopt);
    EXPECT_EQ(battery.text("charge_control_end_threshold"), std::nullopt);
    laptop.probe(whole);
    EXPECT_TRUE(reads()) << "and is looked for until it is back";
    EXPECT_EQ(log.count(), 0U);
}

} // namespace

} // namespace velmora
