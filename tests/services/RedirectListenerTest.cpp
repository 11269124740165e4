// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/RedirectListener.h"

#include "LoopbackConnection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velmora::openid {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using testing::HasSubstr;
using testing::StartsWith;

const std::string state = "the-state-of-this-sign-in";
const std::string right =
    "GET /callback?code=a%2Bb+c&state=" + state + "&iss=https%3A%2F%2Fid.example HTTP/1.1\r\n\r\n";

/// Somebody at the listener's port.
struct Caller : LoopbackConnection {
    explicit Caller(const RedirectListener& listener, bool isIPv6 = false)
        : LoopbackConnection(portOf(listener.address()), isIPv6)
    {
    }
};

struct RedirectListenerTest : testing::Test {
    RedirectListener listener;
    FileDescriptor interruption{eventfd(0, EFD_CLOEXEC)};
    std::future<std::optional<Redirect>> coming;

    void wait(std::chrono::milliseconds patience = 60s)
    {
        coming = std::async(std::launch::async, [this, patience] {
            return listener.wait(state, steady_clock::now() + patience, interruption.get());
        });
    }
    /// What the listener answers to a request that is not the one.
    std::string answerTo(std::string_view request)
    {
        const Caller caller(listener);
        caller.say(request);
        return caller.heard();
    }
    void TearDown() override
    {
        eventfd_write(interruption.get(), 1); // or a failed test would wait
    }
};

TEST_F(RedirectListenerTest, OnlyItsOwnRedirectEndsTheWait)
{
    wait();
    const auto line = [](const std::string& method, const std::string& target) {
        return method + " " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: keep-alive\r\n\r\n";
    };
    const auto background = [](const std::string& headers) {
        return right.substr(0, right.size() - 2) + headers + "\r\n\r\n";
    };
    const std::vector<std::pair<std::string, std::string>> strays{
        {line("GET", "/"), "HTTP/1.1 404"},
        {line("GET", "/favicon.ico"), "HTTP/1.1 404"},
        {line("GET", "/callback/?code=x&state=" + state), "HTTP/1.1 404"},
        {line("GET", "/callback"), "HTTP/1.1 400"},
        {line("GET", "/callback?code=x&state="), "HTTP/1.1 400"},
        {line("GET", "/callback?code=x&state=" + state + "x"), "HTTP/1.1 400"},
        {line("GET", "/callback?code=x&state=The" + state.substr(3)), "HTTP/1.1 400"},
        {line("GET", "/callback?code=x&state=" + state + "&code=y"), "HTTP/1.1 400"},
        {line("GET", "/callback?code=%4&state=" + state), "HTTP/1.1 400"},
        {line("HEAD", "/callback?code=x&state=" + state), "HTTP/1.1 200"},
        {background("Sec-Fetch-Dest: image"), "HTTP/1.1 403"},
        {background("sec-fetch-dest:iframe"), "HTTP/1.1 403"},
        {background("Sec-Fetch-Dest: document\r\nSec-Purpose: prefetch;prerender"), "HTTP/1.1 403"},
        {background("Purpose: Prefetch"), "HTTP/1.1 403"},
        {line("POST", "/callback?code=x&state=" + state), "HTTP/1.1 405"},
        {"GET /callback?code=x&state=" + state + "\r\n\r\n", "HTTP/1.1 400"},
        {std::string("\x16\x03\x01\x02\0\r\n\r\n", 9), "HTTP/1.1 400"},
        {"GET /" + std::string(40'000, 'a'), "HTTP/1.1 431"},
    };
    for (const auto& [request, answer] : strays)
        EXPECT_THAT(answerTo(request), StartsWith(answer)) << request.substr(0, 80);

    const Caller browser(listener);
    browser.say(background("Sec-Fetch-Dest: document") +
                line("GET", "/favicon.ico")); // the second is nobody's any more
    const auto redirect = coming.get();
    ASSERT_TRUE(redirect);
    EXPECT_EQ(redirect->code, "a+b c");
    EXPECT_EQ(redirect->error, "");
    EXPECT_EQ(redirect->issuer, "https://id.example");
    EXPECT_THAT(listener.strays(),
                HasSubstr("other sign-ins refused: 4, redirects that a browser followed unasked refused: 4"));

    const Caller late(listener);
    listener.answer({ResultPage::Kind::signedIn, "Signed in <as> \"M&M\"."});
    const auto page = browser.heard();
    EXPECT_THAT(page,
                testing::AllOf(StartsWith("HTTP/1.1 200 OK\r\n"),
                               HasSubstr("Signed in &lt;as&gt; &quot;M&amp;M&quot;."),
                               HasSubstr("Connection: close\r\n"), HasSubstr("Cache-Control: no-store\r\n"),
                               HasSubstr("Content-Security-Policy: default-src 'none'"),
                               HasSubstr("Referrer-Policy: no-referrer\r\n")));
    EXPECT_THAT(page, testing::Not(HasSubstr("<script")));
    EXPECT_EQ(late.heard(), "");
    EXPECT_FALSE(Caller(listener).isConnected);
}

TEST_F(RedirectListenerTest, WhoSaysNothingOrLittleKeepsNobodyOut)
{
    wait();
    std::vector<std::unique_ptr<Caller>> idle;
    for (int i = 0; i < 60; ++i) {
        idle.push_back(std::make_unique<Caller>(listener));
        if (i % 2 == 0) idle.back()->say("GET /callback?co");
    }
    // As by the browser of a program that opens IPv6 sockets only, and in pieces.
    const Caller browser(listener, true);
    browser.say("GET /callback?error=access_denied&error_desc");
    browser.say("ription=No.&state=" + state + " HTTP/1.1\r\nCookie: a=");
    browser.say(std::string(20'000, 'c') + "\r\n\r");
    EXPECT_EQ(coming.wait_for(50ms), std::future_status::timeout);
    browser.say("\n");
    const auto redirect = coming.get();
    ASSERT_TRUE(redirect);
    EXPECT_EQ(redirect->error, "access_denied");
    EXPECT_EQ(redirect->errorText, "No.");
    EXPECT_EQ(redirect->issuer, std::nullopt);
}

TEST_F(RedirectListenerTest, EndsWithItsTimeAndAtOnceWhenInterrupted)
{
    const Caller idle(listener);
    wait(30ms);
    EXPECT_FALSE(coming.get());
    wait();
    eventfd_write(interruption.get(), 1);
    EXPECT_FALSE(coming.get());
}

TEST_F(RedirectListenerTest, ClosesTheConnectionsOfOtherUsersUnanswered)
{
    if (geteuid() != 0) GTEST_SKIP() << "needs two users";
    wait();
    const pid_t other = fork();
    if (other == 0) {
        if (setresuid(65534, 65534, 65534) != 0) _exit(2);
        const Caller caller(listener);
        caller.say(right);
        _exit(caller.isConnected && caller.heard().empty() ? 0 : 1);
    }
    int status = -1;
    waitpid(other, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(coming.wait_for(0s), std::future_status::timeout);
    eventfd_write(interruption.get(), 1);
    EXPECT_FALSE(coming.get());
    EXPECT_THAT(listener.strays(), HasSubstr("other users closed: 1"));
}

} // namespace
} // namespace velmora::openid
