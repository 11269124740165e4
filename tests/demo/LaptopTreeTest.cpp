// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopKinds.h"
#include "PlainTree.h"
#include "TemporaryFolder.h"

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

} // namespace

} // namespace velmora
