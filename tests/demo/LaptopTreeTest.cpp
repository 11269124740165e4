// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopKinds.h"
#include "PlainTree.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/inotify.h>

namespace velmora {

namespace {

namespace fs = std::filesystem;

const std::string battery = supplyPath("BAT0") + "/";
const std::string limit = battery + "charge_control_end_threshold";

constexpr int patience =
    10'000; // milliseconds that a fault may take to show; nothing waits that long otherwise

/// Waits for something to happen to a file or folder.
class Watch {
public:
    Watch(const fs::path& path, std::uint32_t events) : inotify_(::inotify_init1(IN_CLOEXEC))
    {
        ::inotify_add_watch(inotify_.get(), path.c_str(), events);
    }

    bool wait() const
    {
        pollfd waiting{inotify_.get(), POLLIN, 0};
        return ::poll(&waiting, 1, patience) == 1;
    }

private:
    FileDescriptor inotify_;
};

struct Tree : testing::Test {
    TemporaryFolder folder;
    SharedLaptop laptop{*laptopOfKind("thresholds")};
    TreeOptions options{.folder = folder.path() / "sys", .isPlain = true};
    std::string note;

    void SetUp() override { fs::create_directories(options.folder); }
    std::string read(const std::string& name) const { return folder.read(path(name)); }
    fs::path path(const std::string& name) const { return options.folder / name; }
};

TEST_F(Tree, PlainFilesPutBackWhatTheDriverRefusesAndGoWithTheTree)
{
    auto tree = showTree(laptop, options, note);
    EXPECT_TRUE(fs::is_directory(path("module/thinkpad_acpi")));
    for (const auto& [text, after] : {std::pair{"80", "80\n"}, {"101", "80\n"}, {"eighty\n", "80\n"}}) {
        SCOPED_TRACE(text);
        const Watch replaced(path(battery), IN_MOVED_TO);
        folder.write(path(limit), text);
        EXPECT_TRUE(replaced.wait());
        EXPECT_EQ(read(limit), after);
    }
    const Watch announced(path(battery + "uevent"), IN_CLOSE_WRITE);
    laptop.with([](SimulatedLaptop& shown) { shown.setLevel(55); });
    tree->announce("BAT0");
    EXPECT_TRUE(announced.wait());
    EXPECT_EQ(read(battery + "capacity"), "55\n");
    tree.reset();
    EXPECT_TRUE(fs::is_empty(options.folder));
}

TEST_F(Tree, UsesNoFolderThatHoldsAnythingElse)
{
    const auto keepsake = options.folder / "class/keepsake";
    folder.write(keepsake, "dear");
    EXPECT_THROW(showTree(laptop, options, note), std::runtime_error);
    EXPECT_EQ(folder.read(keepsake), "dear");

    fs::remove_all(options.folder / "class");
    folder.write(options.folder / ".velmora-laptop/fresh", ""); // as a killed run leaves it
    folder.write(options.folder / "class/power_supply/OLD/type", "Battery\n");
    const auto tree = showTree(laptop, options, note);
    EXPECT_FALSE(fs::exists(options.folder / "class/power_supply/OLD"));
}

} // namespace

} // namespace velmora
