// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LinuxPlatform.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace velmora {
namespace {

namespace fs = std::filesystem;

fs::path temporaryDirectory()
{
    const LinuxPlatform platform("test");
    return Platform::current().temporaryDirectory;
}

TEST(LinuxPlatform, TemporaryFilesAreKeptOnlyWhereNobodyElseCanLayALink)
{
    const TemporaryFolder shared;
    const auto own = shared.path() / ("velmora-" + std::to_string(geteuid()));
    setenv("TMPDIR", shared.path().c_str(), true);
    setenv("XDG_RUNTIME_DIR", "", true);
    fs::create_directory(shared.path() / "trap");
    fs::permissions(shared.path() / "trap", fs::perms::owner_all);
    fs::create_directory_symlink(shared.path() / "trap", own);
    EXPECT_EQ(temporaryDirectory(), "");
    fs::remove(own);
    EXPECT_EQ(temporaryDirectory(), own);
    fs::permissions(own, fs::perms::all);
    EXPECT_EQ(temporaryDirectory(), "");
    setenv("XDG_RUNTIME_DIR", (shared.path() / "trap").c_str(), true);
    EXPECT_EQ(temporaryDirectory(), shared.path() / "trap");
    unsetenv("TMPDIR");
    unsetenv("XDG_RUNTIME_DIR");
}

} // namespace
} // namespace velmora
