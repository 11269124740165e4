// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/VersionNotice.h"

#include "FakePlatform.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(VersionNotice, IsForSystemsWithALimiter)
{
    for (const auto& [system, isShown] : {std::pair(SystemVersion{25, 9}, false),
                                          {{26, 3}, false},
                                          {{26, 4}, true},
                                          {{27, 3}, false},
                                          {{27, 4}, true}}) {
        FakePlatform machine;
        machine.platform.systemVersion = system;
        VersionNotice notice;
        notice.appeared();
        EXPECT_EQ(notice.showMacOS264Banner.get(), isShown) << system.major << '.' << system.minor;
    }
}

TEST(VersionNotice, ComesBackUntilItIsAnsweredAndThenNeverAgain)
{
    FakePlatform machine;
    machine.platform.systemVersion = {26, 4};
    {
        VersionNotice notice;
        for (int time = 0; time < 2; ++time) {
            notice.appeared();
            EXPECT_TRUE(notice.showMacOS264Banner.get());
            notice.showMacOS264Banner.set(false); // closed by other means
        }
        EXPECT_EQ(machine.preferences->assignments, 0);
        notice.dismissed();
        notice.appeared();
        EXPECT_FALSE(notice.showMacOS264Banner.get());
    }
    EXPECT_EQ(machine.preferences->values,
              (decltype(machine.preferences->values){{"hasSeenMacOS264Banner", true}}));
    VersionNotice ofTheNextStart;
    ofTheNextStart.appeared();
    EXPECT_FALSE(ofTheNextStart.showMacOS264Banner.get());
}

} // namespace
} // namespace velmora
