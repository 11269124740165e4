// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/LoginSession.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velmora {
namespace {

enum Answer : int { inactive, active, noNamespace };

/// Answers in a process of its own that sees these files of logind and no other.
Answer answerWith(const std::map<std::string, std::string>& files, const char* named)
{
    if (const pid_t child = fork()) {
        int status = 0;
        waitpid(child, &status, 0);
        return static_cast<Answer>(WEXITSTATUS(status));
    }
    const std::filesystem::path folder = "/run/systemd";
    const bool isApart = unshare(CLONE_NEWNS) == 0 &&
                         mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                         mount("tmpfs", "/run", "tmpfs", 0, nullptr) == 0;
    if (!isApart) _exit(noNamespace);
    for (const auto& [name, text] : files) {
        std::filesystem::create_directories((folder / name).parent_path());
        std::ofstream(folder / name) << text;
    }
    named ? setenv("XDG_SESSION_ID", named, 1) : unsetenv("XDG_SESSION_ID");
    _exit(isOwnSessionActive() ? active : inactive);
}

TEST(LoginSessionTest, TheSessionInUseIsTheOneThatLogindCallsActive)
{
    const auto user = "users/" + std::to_string(getuid());
    const std::map<std::string, std::string> two{{"sessions/4", "ACTIVE=1\nSTATE=active\n"},
                                                 {"sessions/7", "ACTIVE=0\nSTATE=online\n"},
                                                 {user, "DISPLAY=7\n"}};
    if (answerWith(two, "4") == noNamespace) GTEST_SKIP() << "no mount namespace without root";
    EXPECT_EQ(answerWith(two, "4"), active);
    EXPECT_EQ(answerWith(two, "7"), inactive);
    EXPECT_EQ(answerWith(two, nullptr), inactive) << "the user's desktop";
    EXPECT_EQ(answerWith(two, "12"), inactive) << "a session that has ended names none";
    EXPECT_EQ(answerWith(two, "../4"), inactive);
    EXPECT_EQ(answerWith({}, "4"), active) << "nobody keeps sessions";
}

} // namespace
} // namespace velmora
