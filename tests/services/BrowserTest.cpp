// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/Browser.h"

#include "LoopTest.h"
#include "RecordingLog.h"
#include "TemporaryFolder.h"
#include "base/CoreDumps.h"

#include <algorithm>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace velmora {
namespace {

/// A PATH whose first folder has the xdg-open that a test wants.
struct BrowserTest : LoopTest {
    TemporaryFolder folder;
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    std::optional<Browser> browser{std::in_place, loop, log};
    std::string path = std::getenv("PATH");
    int failures = 0;

    BrowserTest()
    {
        setenv("PATH", ("relative:" + folder.path().string() + ":/nowhere").c_str(), 1);
        setenv("VELMORA_SYSFS", "/sys", 1);
        setenv("NOTIFY_SOCKET", "/run/notify", 1);
        setenv("XDG_ACTIVATION_TOKEN", "an-older-one", 1);
    }
    ~BrowserTest() override
    {
        for (const auto* name : {"VELMORA_SYSFS", "NOTIFY_SOCKET", "XDG_ACTIVATION_TOKEN"}) unsetenv(name);
        setenv("PATH", path.c_str(), 1);
    }

    void lay(const std::string& script) const
    {
        folder.write("xdg-open", "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(folder.path() / "xdg-open", std::filesystem::perms{0700});
    }
    bool open(const std::string& anchor = "token-of-a-click")
    {
        return browser->open("https://id.example/authorize?a=b&c=$HOME", anchor, [this] { ++failures; });
    }
    bool hasNoChild()
    {
        siginfo_t seen{}; // and left for the browser to reap
        return eventually([&] { return waitid(P_ALL, 0, &seen, WEXITED | WNOHANG | WNOWAIT) < 0; });
    }
};

TEST_F(BrowserTest, GetsThePageTheTokenOfTheClickAndNothingOfOurs)
{
    const auto seen = folder.path() / "seen", go = folder.path() / "go";
    lay("until [ -e " + go.string() +
        " ]; do /bin/sleep 0.01; done; { echo \"$# $1\"; [ -e /proc/$$/fd/99 ] && echo inherited; " +
        "/bin/grep core /proc/$$/limits; /usr/bin/env; } >" + seen.string() + ".new; /bin/mv " +
        seen.string() + ".new " + seen.string());
    rlimit before{};
    getrlimit(RLIMIT_CORE, &before);
    const rlimit usual{.rlim_cur = std::min<rlim_t>(4096, before.rlim_max), .rlim_max = before.rlim_max};
    setrlimit(RLIMIT_CORE, &usual);
    forbidCoreDumps();
    dup2(STDERR_FILENO, 99);
    ASSERT_TRUE(open());
    close(99);
    setrlimit(RLIMIT_CORE, &before);
    folder.write("go", "");
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(seen); }));
    const auto text = folder.read("seen");
    EXPECT_EQ(text.rfind("1 https://id.example/authorize?a=b&c=$HOME\nMax core file size", 0), 0U) << text;
    EXPECT_NE(text.find(" " + std::to_string(usual.rlim_cur) + " "), text.npos) << text;
    EXPECT_NE(text.find("\nXDG_ACTIVATION_TOKEN=token-of-a-click\n"), text.npos);
    for (const auto* own : {"VELMORA_", "NOTIFY_SOCKET", "an-older-one"})
        EXPECT_EQ(text.find(own), text.npos) << own;
    EXPECT_TRUE(hasNoChild());
    EXPECT_EQ(failures, 0);
}

TEST_F(BrowserTest, OneThatFailsIsToldAndOneThatStaysIsLeftAlone)
{
    EXPECT_FALSE(open()) << "there is none";
    EXPECT_EQ(log->count("is in no folder of PATH"), 1U);
    lay("exit 4");
    ASSERT_TRUE(open());
    ASSERT_TRUE(eventually([&] { return failures == 1; }));
    EXPECT_EQ(log->count("ended with status 4"), 1U);
    lay("kill -9 $$");
    ASSERT_TRUE(open());
    ASSERT_TRUE(eventually([&] { return failures == 2; }));
    EXPECT_TRUE(hasNoChild());

    const auto pipe = folder.path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    lay("read line <" + pipe.string() + "; exit 1");
    ASSERT_TRUE(open());
    loop.runOnce(std::chrono::milliseconds{50});
    browser.reset(); // this program ends, the browser does not
    std::ofstream(pipe) << "go\n";
    EXPECT_GT(waitpid(-1, nullptr, 0), 0);
    loop.runOnce(std::chrono::milliseconds{50});
    EXPECT_EQ(failures, 2);
}

} // namespace
} // namespace velmora
