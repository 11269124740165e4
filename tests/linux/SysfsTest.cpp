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
    const struct {
        const char* name;
        int error;
        std::string text;
    } cases[] = {
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

TEST(Sysfs, TakesAnIntegerWholeOrNotAtAll)
{
    EXPECT_EQ(parseInteger("-5833"), -5833);
    EXPECT_EQ(parseInteger("9223372036854775807"), INT64_MAX);
    for (const auto* text : {"", "-", "+5", " 5", "5 ", "5.0", "0x10", "1e3", "nan", "9223372036854775808"})
        EXPECT_EQ(parseInteger(text), std::nullopt) << '"' << text << '"';
}

} // namespace
} // namespace velmora
