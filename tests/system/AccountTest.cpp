// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Keyring.h"
#include "LoopTest.h"
#include "LoopbackConnection.h"
#include "PrivateBus.h"
#include "ScriptedProvider.h"
#include "ShellCommand.h"
#include "account/AccountSetup.h"
#include "texts/AccountTexts.h"
#include "wire/ModelFace.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gmock/gmock.h>

namespace velmora {
namespace {

namespace face = wire::face::account;
using testing::HasSubstr;
using testing::Not;

/// A user with a keyring and a browser that shows the page until the test has done with it; velmora as it
/// runs for them.
struct AccountTest : LoopTest {
    static constexpr auto clientSecret = "a-client's-secret-of-this-test";

    PrivateBus bus;
    TemporaryFolder home;
    ScriptedProvider provider;
    std::optional<Keyring> keyring;
    std::optional<Process> velmora;

    void SetUp() override
    {
        if (!Keyring::isInstalled()) GTEST_SKIP() << "gnome-keyring-daemon or secret-tool is not installed";
        setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
        keyring.emplace(bus.address());
        ASSERT_TRUE(eventually([this] {
            keyring->put("test", "me", "there");
            return keyring->lookUp("test", "me") == "there";
        }));
        provider.change([](auto& behavior) { behavior.clientSecret = clientSecret; });
        layBrowser(staying());
        logIn();
    }
    void TearDown() override
    {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        velmora.reset();
        if (HasFailure()) std::fputs(home.read("log").c_str(), stderr);
    }

    /// One that shows the page until it is closed.
    std::string staying() const
    {
        const auto at = "'" + home.path().string();
        return "echo $$ >" + at + "/browser'; echo \"$1\" >" + at + "/new'; mv " + at + "/new' " + at +
               "/page'; while [ -e " + at + "/page' ]; do sleep 0.05; done";
    }
    void layBrowser(const std::string& script) const
    {
        home.write("bin/xdg-open", "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(home.path() / "bin/xdg-open", std::filesystem::perms{0700});
    }
    /// The user's next session.
    void logIn()
    {
        if (velmora) {
            EXPECT_EQ(velmora->terminate(), 0);
        }
        const auto at = home.path().string();
        velmora.emplace(VELMORA_BIN "/velmora",
                        Process::Environment{{"PATH", at + "/bin:" + std::getenv("PATH")},
                                             {"HOME", at},
                                             {"XDG_CONFIG_HOME", at + "/config"},
                                             {"XDG_DATA_HOME", at + "/data"},
                                             {"XDG_RUNTIME_DIR", at},
                                             {"DISPLAY", ""},
                                             {"WAYLAND_DISPLAY", ""},
                                             {"VELMORA_LOG", "stderr"}},
                        home.path() / "log");
        ASSERT_TRUE(eventually([this] { return !property(face::isSignedIn).empty(); }));
    }

    std::string ask(const std::string& words) const
    {
        const auto outcome = shell("busctl --address=" + bus.address() + " " + words);
        auto said = outcome.status == 0 ? outcome.said.substr(0, outcome.said.find('\n')) : "";
        std::erase(said, '\\'); // before apostrophes
        return said;
    }
    static std::string object()
    {
        return std::string(" ") + wire::face::serviceName + " " + face::objectPath + " " + face::interface +
               " ";
    }
    /// As busctl shows it: "b true".
    std::string property(const char* name) const { return ask("get-property" + object() + name); }
    bool becomes(const char* name, const std::string& value)
    {
        const bool isSo = eventually([&] { return property(name) == value; });
        if (!isSo) ADD_FAILURE() << name << " stays " << property(name);
        return isSo;
    }
    void call(const std::string& words) const { ask("call" + object() + words); }

    void useProvider()
    {
        call("use 'a{sv}' 3 issuer s " + provider.issuer() + " clientID s velmora clientSecret s \"" +
             clientSecret + "\"");
        ASSERT_TRUE(becomes(face::hasClientSecret, "b true"));
    }
    /// A sign-in until the browser shows the provider's page, which is told.
    std::string begin()
    {
        call("signIn 'a{sv}' 0");
        EXPECT_TRUE(eventually([this] { return std::filesystem::exists(home.path() / "page"); }));
        const auto page = home.read("page");
        return page.substr(0, page.find('\n'));
    }
    /// The user agrees there; what the browser shows then.
    std::string agree(const std::string& page)
    {
        const auto to = provider.redirectFor(page);
        const LoopbackConnection connection(portOf(to));
        connection.say("GET " + to.substr(to.find('/', 17)) + " HTTP/1.1\r\nHost: here\r\n\r\n");
        return connection.heard();
    }
    void closeBrowser() const { std::filesystem::remove(home.path() / "page"); }
    void signIn()
    {
        const auto page = begin();
        EXPECT_THAT(agree(page), HasSubstr("200 OK"));
        closeBrowser();
        becomes(face::isSignedIn, "b true");
    }

    std::string kept() const { return keyring->lookUp("app.velmora.oidc", "user-0001-of-the-provider"); }
    std::string keptUser() const { return keyring->lookUp("app.velmora.appleauth", "apple_user_id"); }

    /// The number of velmora's process.
    std::string running() const
    {
        const auto number =
            ask(std::string("call org.freedesktop.DBus /org/freedesktop/DBus org.freedesktop.DBus "
                            "GetConnectionUnixProcessID s ") +
                wire::face::serviceName);
        return number.substr(number.find(' ') + 1);
    }
    /// What that process was started with.
    static std::string startOf(const std::string& process)
    {
        return shell("cat /proc/" + process + "/cmdline /proc/" + process + "/environ").said;
    }
    /// All that a process could write over, as it is now.
    std::string memoryOf(const std::string& process) const
    {
        std::ifstream map("/proc/" + process + "/maps"),
            memory("/proc/" + process + "/mem", std::ios::binary);
        std::string all;
        for (std::string line; std::getline(map, line);) {
            unsigned long begin = 0, end = 0;
            char mode = ' ';
            if (std::sscanf(line.c_str(), "%lx-%lx r%c", &begin, &end, &mode) != 3 || mode != 'w') continue;
            std::string part(end - begin, '\0');
            memory.clear();
            memory.seekg(static_cast<std::streamoff>(begin));
            memory.read(part.data(), static_cast<std::streamsize>(part.size()));
            all += part;
        }
        return all;
    }
    void expectForgotten([[maybe_unused]] const std::string& process,
                         [[maybe_unused]] const std::string& secret)
    {
#if !defined(__SANITIZE_ADDRESS__) &&                                                                        \
    !defined(__SANITIZE_THREAD__) // whose memory is too much to look through
        EXPECT_THAT(memoryOf(process), HasSubstr(provider.issuer()));
        // The heap notes at the beginning of a text that memory was given back.
        const auto end = secret.substr(secret.size() / 2);
        EXPECT_TRUE(eventually([&] { return memoryOf(process).find(end) == std::string::npos; })) << secret;
#endif
    }
    /// All that lies under the user's home and is not the keyring's, and what the browser was given.
    std::string everything() const
    {
        std::string all;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(home.path()))
            if (entry.is_regular_file()) all += home.read(entry.path());
        return all;
    }
};

TEST_F(AccountTest, ASignInOutlivesTheSessionUntilTheProviderOrTheUserEndsIt)
{
    useProvider();
    signIn();
    EXPECT_EQ(property(face::userDisplayName), "as 1 \"Mara Lind\"");
    EXPECT_EQ(property(face::userEmail), "as 1 \"mara@example.org\"");
    const auto first = kept();
    EXPECT_THAT(first, HasSubstr(provider.issuer()));

    logIn();
    EXPECT_TRUE(becomes(face::isSignedIn, "b true"));
    EXPECT_EQ(property(face::userDisplayName), "as 1 \"Mara Lind\"");
    EXPECT_NE(kept(), first) << "the provider gave another token";

    provider.goDown();
    logIn();
    EXPECT_TRUE(becomes(face::isUnconfirmed, "b true"));
    ASSERT_TRUE(eventually([this] { return home.read("log").find("did not confirm") != std::string::npos; }));
    provider.comeUp();
    call("checkAgain");
    EXPECT_TRUE(becomes(face::isSignedIn, "b true")) << "nothing was lost";

    provider.revokeGrants();
    logIn();
    EXPECT_TRUE(becomes(face::isRevoked, "b true"));
    EXPECT_TRUE(becomes(face::userDisplayName, "as 0"));
    EXPECT_EQ(kept() + keptUser(), "");
    EXPECT_THAT(home.read("log"), HasSubstr("credential revoked or not found — signing out."));

    signIn();
    EXPECT_EQ(provider.validRefreshTokens(), 1U);
    call("signOut");
    EXPECT_TRUE(becomes(face::isSignedIn, "b false"));
    EXPECT_TRUE(eventually([this] { return provider.validRefreshTokens() == 0; }));
    EXPECT_EQ(kept() + keptUser(), "");
    logIn();
    EXPECT_EQ(property(face::userDisplayName), "as 0");
}

TEST_F(AccountTest, TheMachinesIdentityIsFoundBySecretToolAndOutlivesTheKeyring)
{
    const auto filed = [this] { return home.read("data/Velmora/device-identity"); };
    const auto stored = [this] { return keyring->lookUp("app.velmora.identity", "device_uuid"); };
    ASSERT_TRUE(eventually([&] { return !filed().empty(); }));
    const auto identity = stored();
    EXPECT_EQ(identity + "\n", filed());
    keyring->signal(SIGSTOP);
    logIn();
    EXPECT_EQ(velmora->terminate(), 0) << "nobody waits for a keyring that hangs";
    velmora.reset();
    keyring.emplace(bus.address());
    logIn();
    ASSERT_TRUE(eventually([&] { return stored() == identity; })) << "a new keyring learns it";
    EXPECT_EQ(home.read("log").find(identity), std::string::npos);
}

TEST_F(AccountTest, NoTokenCodeOrSecretIsAnywhereButInTheKeyring)
{
    const auto token = [this] {
        constexpr std::string_view before = "\"refresh_token\":\"";
        const auto item = kept();
        const auto begin = item.find(before) + before.size();
        return item.substr(begin, item.find('"', begin) - begin);
    };
    useProvider();
    const auto page = begin();
    const auto self = running();
    auto browser = home.read("browser");
    browser.resize(browser.find('\n'));
    auto seen = startOf(self) + startOf(browser) + page;
    EXPECT_THAT(seen, HasSubstr("code_challenge="));
    EXPECT_THAT(agree(page), HasSubstr("200 OK"));
    ASSERT_TRUE(becomes(face::isSignedIn, "b true"));
    seen += startOf(self);
    EXPECT_THAT(startOf(browser), Not(HasSubstr("VELMORA_LOG")));
    EXPECT_THAT(shell("grep 'core file' /proc/" + self + "/limits").said,
                testing::ContainsRegex("size +[01] "))
        << "no core dump, not even to a program";
    const auto first = token();
    for (const auto& secret : {first, std::string(clientSecret)}) expectForgotten(self, secret);
    closeBrowser();
    logIn();
    ASSERT_TRUE(becomes(face::isSignedIn, "b true"));
    const auto last = token();
    EXPECT_NE(last, first) << "it was used";
    for (const auto& secret : {first, last, std::string(clientSecret)}) expectForgotten(running(), secret);
    call("signOut");
    ASSERT_TRUE(eventually([this] { return provider.validRefreshTokens() == 0; }));
    expectForgotten(running(), last);
    velmora->terminate();
    seen += everything();
    EXPECT_THAT(seen, HasSubstr("Apple Sign In: user signed out."));
    ASSERT_GT(provider.secrets().size(), 6U);
    for (const auto& secret : provider.secrets()) EXPECT_EQ(seen.find(secret), seen.npos) << secret;
}

TEST_F(AccountTest, WhatKeepsASignInFromSucceedingIsToldAndLeavesNothingBehind)
{
    call("signIn 'a{sv}' 0");
    const auto quoted = [](IdentityFault fault) { return "as 1 \"" + account::faultText(fault) + "\""; };
    EXPECT_TRUE(becomes(face::errorMessage, quoted(IdentityFault::noProvider)));
    useProvider();
    const auto page = begin();
    EXPECT_TRUE(becomes(face::isLoading, "b true"));
    call("signIn 'a{sv}' 0"); // while one runs
    call("cancelSignIn");
    EXPECT_TRUE(becomes(face::isLoading, "b false"));
    EXPECT_EQ(property(face::errorMessage), "as 0");
    EXPECT_EQ(agree(page).find("200 OK"), std::string::npos) << "nobody listens any more";
    closeBrowser();

    provider.change(
        [](auto& behavior) { behavior.claims = [](auto& claims) { claims["nonce"] = "other"; }; });
    EXPECT_THAT(agree(begin()), HasSubstr("HTTP/1.1"));
    EXPECT_TRUE(becomes(face::errorMessage, quoted(IdentityFault::invalid)));
    closeBrowser();
    layBrowser("exit 3");
    call("signIn 'a{sv}' 0");
    EXPECT_TRUE(becomes(face::errorMessage, quoted(IdentityFault::noBrowser)));
    layBrowser(staying());
    begin();
    logIn(); // in the midst of it
    EXPECT_TRUE(std::filesystem::exists(home.path() / "page")) << "the browser is the user's";
    closeBrowser();
    EXPECT_EQ(kept() + keptUser(), "");
}

} // namespace
} // namespace velmora
