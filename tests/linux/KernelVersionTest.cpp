// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/KernelVersion.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(KernelVersion, IsWhatTheReleaseBeginsWithOrNothing)
{
    const std::pair<const char*, SystemVersion> cases[] = {
        {"6.1.0-18-amd64", {6, 1}},
        {"6.12-rc3", {6, 12}},
        {"", {}},
        {"6.", {}},
        {"-26.4", {}},
        {" 26.4", {}},
        {"99999999999.4", {}},
        {"26.99999999999", {}},
    };
    for (const auto& [release, version] : cases) EXPECT_EQ(versionOfRelease(release), version) << release;
    EXPECT_GE(kernelVersion().major, 2);
}

} // namespace
} // namespace velmora
