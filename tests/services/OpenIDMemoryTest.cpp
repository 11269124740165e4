// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LoopbackConnection.h"
#include "ScriptedProvider.h"
#include "base/Wipe.h"
#include "identity/openid/OpenIDSession.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velmora::openid {
namespace {

/// A text that nobody finds who looks for it, and the text.
std::string hidden(std::string text)
{
    for (char& c : text) ++c;
    return text;
}
std::string revealed(std::string text)
{
    for (char& c : text) --c;
    return text;
}

/// How often this process has the text's end in its heap or on its stack. (Its beginning is where the heap
/// notes that memory was given back.)
int tracesOf(const std::string& hiddenText)
{
    const auto sought = hiddenText.substr(hiddenText.size() / 2);
    const auto isSame = [](char there, char wanted) { return there == static_cast<char>(wanted - 1); };
    int count = 0;
    std::ifstream regions("/proc/self/maps");
    for (std::string region; std::getline(regions, region);) {
        if (region.find("[heap]") == region.npos && region.find("[stack]") == region.npos) continue;
        const auto dash = region.find('-');
        const auto* at = reinterpret_cast<const char*>(std::stoull(region, nullptr, 16));
        const auto* end = reinterpret_cast<const char*>(std::stoull(region.substr(dash + 1), nullptr, 16));
        for (; (at = std::search(at, end, sought.begin(), sought.end(), isSame)) != end; ++at) ++count;
    }
    return count;
}

Date systemTime()
{
    return Date::fromUnix(static_cast<double>(std::time(nullptr)));
}

/// What is left of a refresh token, its successor and the client's secret once the token was used; 100 and
/// more where the trial failed.
int tracesOfRefresh(const std::string& issuer, const std::string& hiddenSecret,
                    const std::string& hiddenToken)
{
    std::string successor;
    {
        OpenIDSession session({.source = {.issuer = issuer, .clientID = "velmora"},
                               .secret = [&hiddenSecret] { return revealed(hiddenSecret); }},
                              systemTime);
        auto token = revealed(hiddenToken);
        const auto result =
            session.refresh(token, [&successor](const std::string& next) { successor = hidden(next); });
        if (!std::holds_alternative<std::string>(result) || successor.empty()) return 100;
        if (tracesOf(hiddenToken) == 0) return 101; // it finds nothing that is there
        wipe(token);
    }
    return tracesOf(hiddenToken) + tracesOf(successor) + tracesOf(hiddenSecret);
}

/// A refresh token of that provider's, by a sign-in.
std::string refreshTokenOf(ScriptedProvider& provider, const std::string& secret)
{
    OpenIDSession session({.source = {.issuer = provider.issuer(), .clientID = "velmora"},
                           .secret = [&secret] { return secret; }},
                          systemTime);
    std::future<void> browser;
    const auto result = session.signIn([&](const std::string& page) {
        browser = std::async(std::launch::async, [to = provider.redirectFor(page)] {
            const LoopbackConnection connection(portOf(to));
            connection.say("GET " + to.substr(to.find('/', 8)) + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
            connection.heard();
        });
        return true;
    });
    return std::get<OpenIDClient::SignedIn>(result).refreshToken;
}

TEST(OpenIDMemoryTest, HoldsNothingOfATokenOnceItWasUsed)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "The heap of a sanitizer is elsewhere.";
#endif
    const auto secret = hidden("the-word-that-only-the-client-knows");
    // In a process of its own: this one is the provider as well, which wipes nothing.
    int ends[2]{};
    ASSERT_EQ(pipe(ends), 0);
    const auto child = fork();
    if (child == 0) {
        close(ends[1]); // or nothing would tell that nothing comes
        char said[1000]{};
        if (read(ends[0], said, sizeof said - 1) <= 0) _exit(102);
        const std::string_view text(said);
        const auto blank = text.find(' ');
        _exit(
            tracesOfRefresh(std::string(text.substr(0, blank)), secret, std::string(text.substr(blank + 1))));
    }
    ScriptedProvider provider;
    provider.change([&](auto& behavior) { behavior.clientSecret = revealed(secret); });
    const auto told = provider.issuer() + " " + hidden(refreshTokenOf(provider, revealed(secret)));
    EXPECT_EQ(write(ends[1], told.data(), told.size()), static_cast<ssize_t>(told.size()));
    int status = -1;
    waitpid(child, &status, 0);
    for (const int end : ends) close(end);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "traces, or 100 and more";
}

} // namespace
} // namespace velmora::openid
