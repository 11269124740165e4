// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/Sysfs.h"

#include "RecordingLog.h"
#include "SysfsTree.h"
#include "power/DeviceAttributes.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace velmora {
namespace {

TEST(DeviceAttributes, ReadsAttributesAndNothingElse)
{
    SysfsTree tree;
    RecordingLog log;
    const auto& folder = tree.folder;
    folder.write("page", std::string(4096, 'x'));
    folder.write("longer", std::string(4097, 'x'));
    folder.write("two", "one\n\n");
    folder.write("empty", "");
    folder.write("bytes", std::string("\xff\0\n", 3));
    tree.breakFile("broken");
    mkfifo((folder.path() / "pipe").c_str(), 0600);
    std::filesystem::create_directory(folder.path() / "folder");
    std::filesystem::create_symlink("loop", folder.path() / "loop");

    Complaints complaints(log, "test");
    DeviceAttributes attributes(folder.path(), "", complaints);
    const std::tuple<const char*, int, std::string> cases[] = {
        {"page", 0, std::string(4096, 'x')},
        {"longer", EFBIG, ""},
        {"two", 0, "one\n"},
        {"empty", 0, ""},
        {"bytes", 0, {"\xff\0", 2}},
        {"broken", EIO, ""},
        {"pipe", EINVAL, ""},
        {"folder", EINVAL, ""},
        {"loop", ELOOP, ""},
        {"none", ENOENT, ""},
    };
    for (const auto& [name, error, text] : cases) {
        SCOPED_TRACE(name);
        const auto read = attributes.read(name);
        EXPECT_EQ(read.error, error);
        EXPECT_EQ(read.text, text);
    }
}

TEST(DeviceAttributes, RemembersWhereFilesStay)
{
    using Memory = DeviceAttributes::Memory;
    SysfsTree tree;
    RecordingLog log;
    Complaints complaints(log, "test");
    tree.supply("BAT0", {{"type", "Battery"}, {"capacity", "100"}});
    for (const auto memory : {Memory::always, Memory::onSysfs}) {
        const bool remembers = memory == Memory::always;
        SCOPED_TRACE(remembers);
        DeviceAttributes battery(tree.folder.path(), "class/power_supply/BAT0", complaints, memory);
        EXPECT_EQ(battery.fixedText("type"), "Battery");
        EXPECT_EQ(battery.integer("capacity"), 100);
        for (const auto* absent : {"cycle_count", "charge_control_end_threshold", "charge_behaviour"})
            EXPECT_EQ(battery.text(absent), std::nullopt);
        tree.supply("BAT0", {{"type", "UPS"}, {"capacity", "9"}, {"cycle_count", "7"}});
        tree.supply("BAT0", {{"charge_control_end_threshold", "80"}, {"charge_behaviour", "[auto]"}});
        EXPECT_EQ(battery.integer("capacity"), 9) << "shorter than what stood there";
        EXPECT_EQ(battery.integer("charge_control_end_threshold"), 80) << "came late";
        EXPECT_EQ(battery.text("charge_behaviour"), "[auto]");
        EXPECT_EQ(battery.text("cycle_count").has_value(), !remembers);
        EXPECT_EQ(battery.fixedText("type"), remembers ? "Battery" : "UPS");
        battery.forget();
        EXPECT_EQ(battery.integer("cycle_count"), 7);
        std::filesystem::remove_all(tree.folder.path() / "class/power_supply/BAT0");
        tree.supply("BAT0", {{"type", "Battery"}, {"capacity", "100"}});
    }
}

TEST(Sysfs, TakesAnIntegerWholeOrNotAtAll)
{
    EXPECT_EQ(parseInteger("-5833"), -5833);
    EXPECT_EQ(parseInteger("9223372036854775807"), INT64_MAX);
    for (const auto* text : {"", "-", "+5", " 5", "5 ", "5.0", "0x10", "1e3", "nan", "9223372036854775808"})
        EXPECT_EQ(parseInteger(text), std::nullopt) << '"' << text << '"';
}

} // namespace
} // namespace velmora
