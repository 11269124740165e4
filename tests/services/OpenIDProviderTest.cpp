// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/OpenIDProvider.h"

#include "LoopTest.h"
#include "RecordingLog.h"
#include "identity/KeptSignIns.h"
#include "texts/AccountTexts.h"

#include <condition_variable>
#include <gmock/gmock.h>
#include <map>
#include <mutex>
#include <thread>

namespace velmora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using State = IdentityProvider::CredentialState;
using Result = IdentityProvider::Result;

/// A store whose add replaces, as that of a desktop does. Any thread.
struct Drawer final : SecretStore {
    std::mutex mutex;
    std::map<std::string, std::string> items; ///< by account
    bool isLocked = false;
    std::function<void()> onAdd;
    int calls = 0;

    SecretStatus add(const SecretItem& item) override
    {
        const std::lock_guard lock(mutex);
        ++calls;
        if (onAdd) onAdd();
        if (isLocked) return SecretStatus::unavailable;
        EXPECT_EQ(item.service, "app.velmora.oidc");
        items.insert_or_assign(item.account, item.data.value());
        return SecretStatus::success;
    }
    SecretStatus copyMatching(SecretItem& item) override
    {
        const std::lock_guard lock(mutex);
        ++calls;
        if (isLocked) return SecretStatus::unavailable;
        const auto found = items.find(item.account);
        if (found == items.end()) return SecretStatus::notFound;
        item.data = found->second;
        return SecretStatus::success;
    }
    SecretStatus remove(const SecretItem& item) override
    {
        const std::lock_guard lock(mutex);
        if (isLocked) return SecretStatus::unavailable;
        return items.erase(item.account) > 0 ? SecretStatus::success : SecretStatus::notFound;
    }
    void whenReady(std::function<void()>) override {}
    void cancel() override {}
    std::string at(const std::string& account)
    {
        const std::lock_guard lock(mutex);
        return items.contains(account) ? items.at(account) : "";
    }
    void lock(bool isNow)
    {
        const std::lock_guard lock(mutex);
        isLocked = isNow;
    }
};

/// What conversations with a provider bring, and where they stop until the test goes on.
struct Script {
    enum class Stop { nowhere, opening, signingIn, reaching, refreshing, revoking };

    std::variant<OpenIDClient::SignedIn, IdentityProblem> signIn =
        OpenIDClient::SignedIn{.credential = {.user = "ann"}, .refreshToken = "token-1"};
    std::variant<std::string, IdentityProblem> refresh = "ann";
    std::string rotated = "token-2"; ///< empty: the token stays
    Stop stop = Stop::nowhere;

    std::mutex mutex;
    std::condition_variable changed;
    bool isAtStop = false;
    bool isReleased = false;
    std::vector<std::string> asked; ///< "refresh token-1"
    std::vector<std::string> cancelledAt;

    void note(const std::string& what)
    {
        const std::lock_guard lock(mutex);
        asked.push_back(what);
    }
    void pass(Stop place, const bool& isCancelled)
    {
        std::unique_lock lock(mutex);
        if (place != stop) return;
        isAtStop = true;
        changed.notify_all();
        changed.wait(lock, [&] { return isCancelled || isReleased; });
    }
    void release()
    {
        const std::lock_guard lock(mutex);
        isReleased = true;
        changed.notify_all();
    }
    void awaitStop()
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return isAtStop; });
        isAtStop = false;
    }
    std::vector<std::string> takeAsked()
    {
        const std::lock_guard lock(mutex);
        return std::exchange(asked, {});
    }
};

struct ScriptedClient final : OpenIDClient {
    ScriptedClient(Script& script, IdentityAccess access) : script_(script), access_(std::move(access)) {}

    std::variant<SignedIn, IdentityProblem> signIn(const OpenBrowser& openBrowser) override
    {
        script_.note("sign in at " + access_.source.issuer);
        if (!openBrowser("https://id.example/authorize")) return IdentityProblem{IdentityFault::noBrowser};
        script_.pass(Script::Stop::signingIn, isCancelled_);
        if (isCancelled_) return IdentityProblem{IdentityFault::canceled};
        return script_.signIn;
    }
    std::optional<IdentityProblem> reach() override
    {
        script_.pass(Script::Stop::reaching, isCancelled_);
        return isCancelled_ ? std::optional(IdentityProblem{IdentityFault::canceled}) : std::nullopt;
    }
    std::variant<std::string, IdentityProblem> refresh(const std::string& token, const Keep& keep) override
    {
        script_.note("refresh " + token);
        script_.pass(Script::Stop::refreshing, isCancelled_);
        if (isCancelled_) return IdentityProblem{IdentityFault::canceled};
        if (!script_.rotated.empty() && std::holds_alternative<std::string>(script_.refresh))
            keep(script_.rotated);
        return script_.refresh;
    }
    void revoke(const std::string& token) override
    {
        script_.note("revoke " + token + " at " + access_.source.issuer + " by " + access_.secret());
        script_.pass(Script::Stop::revoking, isCancelled_);
    }
    void cancel() override
    {
        const std::lock_guard lock(script_.mutex);
        isCancelled_ = true;
        script_.changed.notify_all();
    }

private:
    Script& script_;
    IdentityAccess access_;
    bool isCancelled_ = false; ///< under the script's mutex
};

/// Whose timers are due at once where the test is in a hurry, else never.
struct HastyLoop final : MainLoop {
    explicit HastyLoop(EventLoop& loop) : loop_(loop) {}

    bool isHasty = false;

    void post(Task task) override { loop_.post(std::move(task)); }
    Timer after(std::chrono::milliseconds, Task task, std::chrono::milliseconds) override
    {
        return isHasty ? loop_.after(std::chrono::milliseconds{0}, std::move(task)) : nullptr;
    }

private:
    EventLoop& loop_;
};

struct OpenIDProviderTest : LoopTest {
    Script script;
    std::shared_ptr<HastyLoop> timers = std::make_shared<HastyLoop>(loop);
    std::shared_ptr<Drawer> drawer = std::make_shared<Drawer>();
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    bool hasModule = true;
    bool hasBrowser = true;
    std::function<void()> browserFailed;
    std::optional<OpenIDProvider> provider;

    OpenIDProviderTest() { begin(); }
    ~OpenIDProviderTest() override { script.release(); }

    /// A run of the program.
    void begin()
    {
        provider.reset();
        provider.emplace(
            OpenIDProvider::Setup{.loop = timers,
                                  .log = log,
                                  .secrets = drawer,
                                  .open = [this](IdentityAccess access) -> std::unique_ptr<OpenIDClient> {
                                      script.pass(Script::Stop::opening, never);
                                      if (!hasModule) return nullptr;
                                      return std::make_unique<ScriptedClient>(script, std::move(access));
                                  },
                                  .openBrowser =
                                      [this](const auto&, const auto& anchor, auto failed) {
                                          EXPECT_EQ(anchor, "anchor");
                                          browserFailed = std::move(failed);
                                          return hasBrowser;
                                      }});
        use("https://id.example", "velmora");
    }
    void use(const std::string& issuer, const std::string& client)
    {
        provider->use({.issuer = issuer, .clientID = client, .parameters = "a=b"}, [] { return "secret"; });
    }

    /// Where the answer to a request comes to.
    template <typename Answer>
    struct Answered {
        std::mutex mutex;
        std::optional<Answer> answer;

        std::function<void(Answer)> taker()
        {
            return [this](Answer given) {
                const std::lock_guard lock(mutex);
                EXPECT_FALSE(answer) << "answered twice";
                answer = std::move(given);
            };
        }
        bool isThere()
        {
            const std::lock_guard lock(mutex);
            return answer.has_value();
        }
    };
    void request(Answered<Result>& answered)
    {
        using Scope = IdentityProvider::Scope;
        provider->performRequest({Scope::fullName, Scope::email}, "anchor", answered.taker());
    }
    std::string text(Answered<Result>& answered)
    {
        EXPECT_TRUE(eventually([&] { return answered.isThere(); }));
        if (const auto* credential = std::get_if<IdentityCredential>(&*answered.answer))
            return credential->user;
        const auto& error = std::get<IdentityError>(*answered.answer);
        return error.code == IdentityError::canceled ? "canceled" : error.localizedDescription;
    }
    /// The user, "canceled", or what the user is told.
    std::string signIn()
    {
        Answered<Result> answered;
        request(answered);
        return text(answered);
    }
    State state(const std::string& user = "ann")
    {
        Answered<State> answered;
        provider->credentialState(user, answered.taker());
        EXPECT_TRUE(eventually([&] { return answered.isThere(); }));
        return *answered.answer;
    }
    void finish() { state("nobody"); }
    void stopAt(Script::Stop place)
    {
        const std::lock_guard lock(script.mutex);
        script.stop = place;
        script.isReleased = script.isAtStop = false;
    }
    /// What is asked of providers until that, which comes in its own time.
    std::vector<std::string> askedUntil(const std::string& last)
    {
        EXPECT_TRUE(eventually([&] {
            const std::lock_guard lock(script.mutex);
            return !script.asked.empty() && script.asked.back() == last;
        })) << last;
        return script.takeAsked();
    }

    static std::string item(const std::string& token, const std::string& issuer = "https://id.example",
                            const std::string& client = "velmora")
    {
        return R"({"issuer":")" + issuer + R"(","client_id":")" + client + R"(","refresh_token":")" + token +
               R"("})";
    }

    const bool never = false;
};

TEST_F(OpenIDProviderTest, WhatASignInLeavesBehindIsInTheStoreAndNowhereElse)
{
    EXPECT_EQ(signIn(), "ann");
    EXPECT_EQ(drawer->at("ann"), item("token-1"));
    EXPECT_EQ(log->count(), 0U);

    script.signIn = OpenIDClient::SignedIn{.credential = {.user = "ann"}};
    EXPECT_EQ(signIn(), "ann");
    EXPECT_EQ(drawer->at("ann"), item("token-1")) << "a provider may give it at the first sign-in alone";
    use("https://id.example", "another");
    EXPECT_EQ(signIn(), "ann");
    EXPECT_EQ(drawer->at("ann"), item("", "https://id.example", "another"));
    EXPECT_EQ(log->count("gave no token for later"), 1U);
    EXPECT_EQ(state(), State::unknown);

    EXPECT_EQ(log->count("it cannot be asked whether"), 1U);

    drawer->isLocked = true;
    drawer->calls = 0;
    script.signIn = OpenIDClient::SignedIn{.credential = {.user = "bob"}, .refreshToken = "token-9"};
    EXPECT_EQ(signIn(), "bob");
    EXPECT_EQ(drawer->calls, 1) << "a store that does not answer is not waited for twice";
    EXPECT_EQ(log->count("did not take the sign-in"), 1U);
    script.takeAsked();
    provider->forget("bob");
    askedUntil("revoke token-9 at https://id.example by secret");
    EXPECT_EQ(log->count("token-") + log->count("secret\""), 0U);
}

TEST_F(OpenIDProviderTest, ASignInThatFailsSaysWhatHelps)
{
    const auto text = [](IdentityFault fault) { return account::faultText(fault); };
    script.signIn = IdentityProblem{IdentityFault::signature, "Its token is signed by nobody."};
    EXPECT_EQ(signIn(), text(IdentityFault::signature));
    EXPECT_EQ(log->count("https://id.example did not succeed. Its token is signed by nobody."), 1U);
    script.signIn = IdentityProblem{IdentityFault::canceled, "access_denied"};
    EXPECT_EQ(signIn(), "canceled");
    EXPECT_EQ(log->count(), 1U) << "a user who changes their mind is no matter for the log";
    hasBrowser = false;
    EXPECT_EQ(signIn(), text(IdentityFault::noBrowser));
    hasModule = false;
    EXPECT_EQ(signIn(), text(IdentityFault::noModule));
    EXPECT_EQ(state(), State::notFound);
    use("", "");
    EXPECT_EQ(signIn(), text(IdentityFault::noProvider));
    EXPECT_THAT(drawer->items, IsEmpty());
}

TEST_F(OpenIDProviderTest, AsksTheProviderWithTheTokenAndNeverTakesSilenceForARevocation)
{
    using enum IdentityFault;
    struct Row {
        std::string kept;
        std::variant<std::string, IdentityProblem> answer;
        State state;
        std::string left;
    };
    const auto damaged = R"({"issuer":"https://id.example","client_id":7})";
    const Row rows[]{
        {item("token-1"), "ann", State::authorized, item("token-2")},
        {item("token-1"), "eve", State::transferred, item("token-2")},
        {item("token-1"), IdentityProblem{revoked, "invalid_grant"}, State::revoked, ""},
        {item("token-1"), IdentityProblem{client, "invalid_client"}, State::unknown, item("token-1")},
        {item("token-1"), IdentityProblem{unreachable, "503"}, State::unknown, item("token-1")},
        {item("token-1"), IdentityProblem{invalid, "HTML"}, State::unknown, item("token-1")},
        {"", "ann", State::notFound, ""},
        {item(""), "ann", State::unknown, item("")},
        {item("t", "https://other.example"), "ann", State::unknown, item("t", "https://other.example")},
        {item("t", "https://id.example", "other"), "ann", State::unknown,
         item("t", "https://id.example", "other")},
        {damaged, "ann", State::unknown, damaged},
        {"[[[[", "ann", State::unknown, "[[[["},
    };
    for (const auto& row : rows) {
        drawer->items.clear();
        if (!row.kept.empty()) drawer->items.emplace("ann", row.kept);
        script.refresh = row.answer;
        EXPECT_EQ(state(), row.state) << row.kept;
        EXPECT_EQ(drawer->at("ann"), row.left);
    }
    script.refresh = "ann";
    drawer->items["ann"] = item("token-1");
    drawer->isLocked = true;
    EXPECT_EQ(state(), State::unknown);
    drawer->isLocked = false;
    hasModule = false;
    EXPECT_EQ(state(), State::unknown);
    hasModule = true;
    EXPECT_EQ(log->count("token-"), 0U);

    script.takeAsked();
    timers->isHasty = true;
    drawer->onAdd = [this, rest = 3]() mutable { drawer->isLocked = --rest > 0; };
    EXPECT_EQ(state(), State::authorized);
    EXPECT_TRUE(eventually([&] { return drawer->at("ann") == item("token-2"); })) << "offered again";
    timers->isHasty = false;
    drawer->onAdd = [this] { drawer->isLocked = true; };
    script.rotated = "token-3";
    EXPECT_EQ(state(), State::authorized);
    EXPECT_EQ(state(), State::authorized);
    drawer->onAdd = nullptr;
    drawer->lock(false);
    begin();
    EXPECT_EQ(drawer->at("ann"), item("token-3")) << "at the end, too";
    EXPECT_THAT(script.takeAsked(), ElementsAre("refresh token-1", "refresh token-2", "refresh token-3"));
}

TEST_F(OpenIDProviderTest, WhoSignsInWaitsForNothingButAnAnswerThatCounts)
{
    drawer->items["ann"] = item("token-1");
    stopAt(Script::Stop::reaching);
    Answered<State> gaveWay, counts;
    provider->credentialState("ann", gaveWay.taker());
    script.awaitStop();
    EXPECT_EQ(signIn(), "ann") << "before a check that cannot reach the provider";
    EXPECT_EQ(gaveWay.answer, State::unknown);
    stopAt(Script::Stop::revoking);
    provider->forget("ann");
    script.awaitStop();
    EXPECT_EQ(signIn(), "ann") << "before a revocation";

    stopAt(Script::Stop::refreshing);
    script.takeAsked();
    provider->credentialState("ann", counts.taker());
    script.awaitStop();
    Answered<Result> cancelled;
    request(cancelled);
    provider->cancelRequest();
    EXPECT_EQ(text(cancelled), "canceled") << "at once";
    EXPECT_FALSE(counts.isThere());
    provider->forget("ann");
    EXPECT_TRUE(eventually([&] { return drawer->at("ann").empty(); }))
        << "while a check waits for its answer";
    script.release();
    EXPECT_THAT(askedUntil("revoke token-2 at https://id.example by secret"),
                ElementsAre("refresh token-1", "revoke token-1 at https://id.example by secret",
                            "revoke token-2 at https://id.example by secret"));
    EXPECT_EQ(drawer->at("ann"), "") << "what comes in its place is not kept";
}

TEST_F(OpenIDProviderTest, CancelIsHeardInEveryPhaseAndPutsBackWhatWasKept)
{
    drawer->items["ann"] = item("token-0");
    for (const auto stop : {Script::Stop::opening, Script::Stop::signingIn}) {
        stopAt(stop);
        Answered<Result> answered;
        request(answered);
        script.awaitStop();
        provider->cancelRequest();
        script.release();
        EXPECT_EQ(text(answered), "canceled");
        finish();
    }
    script.stop = Script::Stop::nowhere;
    drawer->onAdd = [this] { provider->cancelRequest(); };
    EXPECT_EQ(signIn(), "canceled") << "while the store was being written";
    finish();
    EXPECT_EQ(drawer->at("ann"), item("token-0"));
    drawer->items.clear();
    script.takeAsked();
    EXPECT_EQ(signIn(), "canceled");
    EXPECT_THAT(
        askedUntil("revoke token-1 at https://id.example by secret"),
        ElementsAre("sign in at https://id.example", "revoke token-1 at https://id.example by secret"));
    EXPECT_EQ(drawer->at("ann"), "");
    drawer->onAdd = nullptr;

    stopAt(Script::Stop::signingIn);
    Answered<Result> first, second;
    request(first);
    script.awaitStop();
    request(second);
    EXPECT_EQ(text(first), "canceled") << "there is one at a time";
    script.awaitStop();
    browserFailed();
    EXPECT_EQ(text(second), account::faultText(IdentityFault::noBrowser));
}

TEST_F(OpenIDProviderTest, ForgettingIsCertainHereAndTriedAtTheProvider)
{
    drawer->items["ann"] = item("token-1");
    drawer->items["bob"] = item("token-5", "https://other.example");
    script.stop = Script::Stop::revoking;
    provider->forget("ann");
    script.awaitStop();
    EXPECT_EQ(drawer->at("ann"), "") << "before the provider answers";
    provider->forget("bob");
    begin(); // the program ends while the provider is silent, and is started again
    EXPECT_EQ(drawer->at("bob"), "");
    EXPECT_THAT(script.takeAsked(), ElementsAre("revoke token-1 at https://id.example by secret"));

    script.stop = Script::Stop::nowhere;
    drawer->items["bob"] = item("token-5", "https://other.example");
    drawer->items["cid"] = item("");
    provider->forget("cid");
    provider->forget("bob");
    EXPECT_THAT(askedUntil("revoke token-5 at https://other.example by "), SizeIs(1))
        << "without another client's secret";
    EXPECT_THAT(drawer->items, IsEmpty());
    drawer->lock(true);
    provider->forget("ann");
    EXPECT_TRUE(eventually([&] { return log->count("did not remove what it keeps") == 1; }));
}

TEST_F(OpenIDProviderTest, TheEndOfTheProgramWaitsForAnAnswerThatCountsAndForNothingElse)
{
    drawer->items["ann"] = item("token-1");
    script.stop = Script::Stop::refreshing;
    Answered<State> unheard;
    provider->credentialState("ann", unheard.taker());
    script.awaitStop();
    std::thread late([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds{300});
        script.release();
    });
    begin();
    late.join();
    EXPECT_EQ(drawer->at("ann"), item("token-2"));
    EXPECT_FALSE(unheard.isThere());

    for (const auto stop : {Script::Stop::signingIn, Script::Stop::refreshing}) {
        stopAt(stop);
        Answered<Result> never1;
        Answered<State> never2;
        if (stop == Script::Stop::signingIn) request(never1);
        provider->credentialState("ann", never2.taker());
        script.awaitStop();
        begin();
        EXPECT_FALSE(never1.isThere() || never2.isThere());
    }
    EXPECT_EQ(drawer->at("ann"), item("token-2"));
}

} // namespace
} // namespace velmora
