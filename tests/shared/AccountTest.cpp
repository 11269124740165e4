// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FakePlatform.h"
#include "account/AccountSetup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;
using State = IdentityProvider::CredentialState;
using namespace std::chrono_literals;

/// A machine whose secret store and provider are the test's.
struct AppleAuthManagerTest : testing::Test {
    FakePlatform machine;
    std::map<FakeSecretStore::Address, std::string>& items = machine.secretStore->items;
    FakeIdentityProvider& provider = *machine.identityProvider;
    std::optional<AppleAuthManager> manager;

    static FakeSecretStore::Address at(const char* account)
    {
        return {KeptIdentity::keychainService, account};
    }
    void store(const std::string& user, const std::string& name, const std::string& email)
    {
        items = {{at("apple_user_id"), user}, {at("apple_display_name"), name}, {at("apple_email"), email}};
    }
    AppleAuthManager& start()
    {
        manager.emplace();
        machine.settle();
        return *manager;
    }
    void answer(State state)
    {
        provider.answer(state);
        machine.settle();
    }
    void complete(const IdentityProvider::Result& result)
    {
        provider.complete(result);
        machine.settle();
    }
    auto shown() const
    {
        return std::tuple(manager->isSignedIn.get(), manager->userDisplayName.get().value_or("-"),
                          manager->userEmail.get().value_or("-"));
    }
};

TEST_F(AppleAuthManagerTest, RestoresWhatIsKeptAndHasTheProviderConfirmIt)
{
    start();
    EXPECT_EQ(shown(), std::tuple(false, "-", "-"));
    EXPECT_THAT(provider.asked, IsEmpty()) << "nobody is known";

    store("user-1", "Ada Lovelace", "ada@example.org");
    machine.preferences->setText(preference_key::signedInSince, "757000000");
    start();
    EXPECT_EQ(shown(), std::tuple(false, "Ada Lovelace", "ada@example.org"));
    EXPECT_TRUE(manager->isUnconfirmed.get());
    EXPECT_THAT(provider.asked, ElementsAre("user-1"));
    answer(State::authorized);
    EXPECT_EQ(shown(), std::tuple(true, "Ada Lovelace", "ada@example.org"));
    EXPECT_FALSE(manager->isUnconfirmed.get());
    EXPECT_EQ(manager->signedInSince.get(), Date{757'000'000});
    EXPECT_EQ(machine.log->count("Apple Sign In: credential still valid for stored user."), 1U);
}

TEST_F(AppleAuthManagerTest, ForgetsWhoTheProviderNoLongerKnows)
{
    for (const auto state : {State::revoked, State::notFound}) {
        store("user-1", "Ada Lovelace", "ada@example.org");
        start();
        answer(state);
        EXPECT_EQ(shown(), std::tuple(false, "-", "-"));
        EXPECT_THAT(items, IsEmpty());
        EXPECT_TRUE(manager->isRevoked.get());
        EXPECT_FALSE(manager->isUnconfirmed.get());
    }
    EXPECT_EQ(machine.log->count("Apple Sign In: credential revoked or not found — signing out."), 2U);
}

TEST_F(AppleAuthManagerTest, ClearsNothingWithoutAnAnswerAndAsksAFewTimesMore)
{
    store("user-1", "Ada Lovelace", "ada@example.org");
    start();
    answer(State::unknown);
    EXPECT_EQ(shown(), std::tuple(false, "Ada Lovelace", "ada@example.org"));
    for (const auto pause : {1min, 10min, 60min}) {
        machine.loop->advance(pause - 1s);
        const auto before = provider.asked.size();
        machine.loop->advance(1s);
        ASSERT_THAT(provider.asked, SizeIs(before + 1));
        machine.loop->advance(24h); // no second question before the first is answered
        manager->checkAgain();
        ASSERT_THAT(provider.asked, SizeIs(before + 1));
        answer(State::unknown);
    }
    EXPECT_EQ(machine.loop->pendingTimers(), 0U) << "the rest is up to a person, or the next start";
    manager->checkAgain();
    answer(State::transferred);
    EXPECT_EQ(shown(), std::tuple(false, "Ada Lovelace", "ada@example.org"));
    EXPECT_THAT(items, SizeIs(3));
    manager->checkAgain();
    answer(State::authorized);
    EXPECT_TRUE(manager->isSignedIn.get());
}

TEST_F(AppleAuthManagerTest, SignsInAndKeepsWhatTheProviderTellsOnlyOnce)
{
    start();
    EXPECT_TRUE(manager->signIn("token"));
    EXPECT_FALSE(manager->signIn("another")) << "one at a time";
    EXPECT_TRUE(manager->isLoading.get());
    EXPECT_THAT(provider.requests, ElementsAre("token"));
    complete(IdentityCredential{
        .user = "0123456789", .givenName = " Ada", .familyName = "Lovelace ", .email = "ada@example.org"});
    EXPECT_EQ(shown(), std::tuple(true, "Ada Lovelace", "ada@example.org"));
    EXPECT_FALSE(manager->isLoading.get());
    EXPECT_EQ(manager->signedInSince.get(), ManualClock::start);
    EXPECT_EQ(machine.log->count("Apple Sign In: signed in as 01234567…"), 1U);

    manager->signIn("");
    complete(IdentityCredential{.user = "0123456789", .givenName = "", .familyName = "Byron"});
    EXPECT_EQ(shown(), std::tuple(true, "Ada Lovelace", "ada@example.org"));
    start();
    answer(State::authorized);
    EXPECT_EQ(shown(), std::tuple(true, "Ada Lovelace", "ada@example.org"));

    manager->signIn("");
    complete(IdentityCredential{.user = "another"});
    EXPECT_EQ(shown(), std::tuple(true, "-", "-")) << "they are somebody else's";
    EXPECT_THAT(provider.forgotten, ElementsAre("0123456789"));
}

TEST_F(AppleAuthManagerTest, TellsWhatWentWrongButForACancel)
{
    start();
    manager->signIn("");
    complete(IdentityError{.localizedDescription = "The provider is out."});
    EXPECT_THAT(manager->errorMessage.get(), Optional(std::string("The provider is out.")));
    EXPECT_EQ(machine.log->count("Apple Sign In failed: The provider is out."), 1U);
    manager->signIn("");
    EXPECT_EQ(manager->errorMessage.get(), std::nullopt);
    manager->cancelSignIn();
    machine.settle();
    EXPECT_EQ(manager->errorMessage.get(), std::nullopt);
    EXPECT_FALSE(manager->isLoading.get());
    manager->signIn("");
    complete(OtherCredential{});
    EXPECT_EQ(manager->errorMessage.get(), std::nullopt);
    EXPECT_FALSE(manager->isLoading.get() || manager->isSignedIn.get());
}

TEST_F(AppleAuthManagerTest, SignsOutWhateverIsUnderWay)
{
    store("user-1", "Ada Lovelace", "ada@example.org");
    start();
    manager->signOut();
    answer(State::authorized); // too late
    EXPECT_EQ(shown(), std::tuple(false, "-", "-"));
    EXPECT_FALSE(manager->isUnconfirmed.get());
    EXPECT_THAT(items, IsEmpty());
    EXPECT_THAT(provider.forgotten, ElementsAre("user-1"));
    EXPECT_EQ(machine.log->count("Apple Sign In: user signed out."), 1U);
    EXPECT_EQ(machine.preferences->text(preference_key::signedInSince), "");

    // A sign-in that had been answered: by the provider, and by the store as well.
    for (const bool isTaken : {false, true}) {
        manager->signIn("");
        provider.complete(IdentityCredential{.user = "user-2"});
        if (isTaken) machine.loop->runPosted();
        provider.complete = [](const auto&) {};
        manager->signOut();
        machine.settle();
        EXPECT_FALSE(manager->isSignedIn.get() || manager->isLoading.get());
        EXPECT_THAT(items, IsEmpty());
    }
    EXPECT_THAT(provider.forgotten, ElementsAre("user-1", "user-2", "user-2"));
}

TEST_F(AppleAuthManagerTest, SignsOutWhomItHasNotReadYetAndAsksNobodyMeanwhile)
{
    store("user-1", "Ada Lovelace", "ada@example.org");
    manager.emplace();
    manager->signOut();
    manager->signOut();
    manager->checkAgain();
    machine.settle();
    EXPECT_THAT(items, IsEmpty());
    EXPECT_THAT(provider.forgotten, ElementsAre("user-1"));
    EXPECT_THAT(provider.asked, IsEmpty());
    EXPECT_EQ(machine.log->count("user signed out"), 1U);
}

TEST_F(AppleAuthManagerTest, AClosedStoreIsReadLaterAndASignOutFromItHoldsInTheNextRun)
{
    store("user-1", "Ada Lovelace", "ada@example.org");
    machine.secretStore->isAvailable = false;
    start();
    EXPECT_TRUE(manager->isUnread.get());
    machine.secretStore->isAvailable = true;
    machine.loop->advance(1min);
    machine.settle();
    EXPECT_FALSE(manager->isUnread.get());
    answer(State::authorized);

    machine.secretStore->isAvailable = false;
    manager->signOut();
    machine.settle();
    EXPECT_EQ(shown(), std::tuple(false, "-", "-"));
    EXPECT_THAT(items, SizeIs(3));
    machine.secretStore->isAvailable = true;
    start();
    EXPECT_EQ(shown(), std::tuple(false, "-", "-"));
    EXPECT_THAT(items, IsEmpty());
    EXPECT_THAT(provider.forgotten, ElementsAre("user-1", "user-1")) << "the token may still be there, too";

    machine.secretStore->isAvailable = false;
    manager->signIn("");
    complete(IdentityCredential{.user = "user-2"});
    EXPECT_TRUE(manager->isSignedIn.get());
    machine.loop->advance(1min);
    machine.settle();
    machine.secretStore->isAvailable = true;
    machine.loop->advance(10min);
    machine.settle();
    EXPECT_EQ(items.at(at("apple_user_id")), "user-2") << "kept as soon as it can be";
    manager->signOut();
    machine.settle();
    machine.preferences->setText(preference_key::signedInSince, "9223372036854775807");
    store("user-1", "Ada Lovelace", "ada@example.org");
    start();
    EXPECT_EQ(manager->signedInSince.get(), std::nullopt);
}

struct AccountSetupTest : AppleAuthManagerTest {
    const IdentitySource home{.issuer = "https://id.example.org", .clientID = "velmora"};
    const IdentitySource work{.issuer = "https://id.example.com/work", .clientID = "velmora"};
};

TEST_F(AccountSetupTest, HasAManagerOnceTheStoreIsReadyWhereAProviderIsChosen)
{
    store("user-1", "Ada Lovelace", "ada@example.org");
    machine.secretStore->holdsReady = true;
    {
        AccountSetup setup;
        EXPECT_TRUE(setup.use(home, std::nullopt));
        machine.settle();
        EXPECT_EQ(setup.manager(), nullptr);
        machine.secretStore->becomeReady();
        machine.settle();
        EXPECT_THAT(provider.asked, ElementsAre("user-1"));
    }
    const AccountSetup next;
    EXPECT_EQ(next.source.get(), home);
    EXPECT_EQ(provider.source, home);
    machine.preferences->setText(preference_key::identityIssuer, "ftp://nonsense");
    const AccountSetup broken;
    EXPECT_EQ(broken.source.get(), IdentitySource{});
    EXPECT_EQ(machine.log->count("ftp://nonsense"), 1U);
}

TEST_F(AccountSetupTest, AsksNobodyWithoutAProviderUntilSomebodyAsks)
{
    store("user-1", "Ada Lovelace", "ada@example.org");
    AccountSetup setup;
    machine.settle();
    EXPECT_EQ(setup.manager(), nullptr);
    bool isTold = false;
    setup.onManager = [&] { isTold = true; };
    setup.madeManager();
    machine.settle();
    EXPECT_TRUE(isTold);
    EXPECT_THAT(provider.asked, ElementsAre("user-1"));
}

TEST_F(AccountSetupTest, AnotherProviderSignsOutAndTheSecretLiesInTheStoreAlone)
{
    AccountSetup setup;
    EXPECT_TRUE(setup.use(home, "hush"));
    machine.settle();
    EXPECT_TRUE(setup.hasClientSecret.get());
    EXPECT_EQ(provider.clientSecret(), "hush");
    setup.manager()->signIn("");
    complete(IdentityCredential{.user = "user-1"});
    auto wanted = home;
    wanted.parameters = "access_type=offline";
    EXPECT_TRUE(setup.use(wanted, std::nullopt));
    machine.settle();
    EXPECT_TRUE(setup.manager()->isSignedIn.get()) << "the same client";
    EXPECT_EQ(provider.clientSecret(), "hush");

    machine.secretStore->isAvailable = false;
    EXPECT_TRUE(setup.use(work, "psst"));
    EXPECT_FALSE(setup.use(home, std::nullopt)) << "one choice after the other";
    machine.settle();
    EXPECT_TRUE(setup.isSecretRefused.get());
    EXPECT_EQ(setup.source.get(), wanted);
    EXPECT_THAT(provider.forgotten, IsEmpty());

    machine.secretStore->isAvailable = true;
    EXPECT_TRUE(setup.use(work, std::nullopt));
    machine.settle();
    EXPECT_FALSE(setup.manager()->isSignedIn.get() || setup.hasClientSecret.get());
    EXPECT_THAT(provider.forgotten, ElementsAre("user-1"));
    EXPECT_EQ(provider.clientSecret(), "");
    EXPECT_TRUE(setup.use({}, std::nullopt));
    EXPECT_EQ(provider.source, IdentitySource{});
}

TEST_F(AccountSetupTest, AnotherProviderSignsOutWhoHasNotBeenReadYet)
{
    machine.preferences->setText(preference_key::identityIssuer, home.issuer);
    machine.preferences->setText(preference_key::identityClient, home.clientID);
    for (const bool isReady : {false, true}) {
        store("user-1", "Ada Lovelace", "ada@example.org");
        machine.secretStore->holdsReady = !isReady;
        AccountSetup setup;
        machine.loop->runPosted();
        EXPECT_TRUE(setup.use(isReady ? home : work, std::nullopt));
        machine.settle();
        EXPECT_THAT(items, IsEmpty());
        EXPECT_EQ(provider.forgotten.size(), isReady ? 2U : 1U);
    }
    EXPECT_THAT(provider.asked, IsEmpty()) << "one provider for another's user";
}

TEST_F(AccountSetupTest, RefusesProvidersThatWouldNotDo)
{
    using Flaw = AccountSetup::Flaw;
    const auto flaw = [](const char* issuer, const char* client = "velmora", const char* parameters = "") {
        return AccountSetup::flawOf({.issuer = issuer, .clientID = client, .parameters = parameters});
    };
    for (const auto* good : {"https://id.example.org", "https://id.example.org:8443/realms/home",
                             "http://127.0.0.1:8080", "http://localhost", "http://[::1]:80/x"})
        EXPECT_EQ(flaw(good), Flaw::none) << good;
    for (const auto* bad : {"", "id.example.org", "http://id.example.org", "http://127.0.0.1.example.org",
                            "http://localhost@example.org", "https://", "https:///x", "https://a b",
                            "https://a:99999999/", "https://%00", "https://a:x", "https://a?b", "https://a#b",
                            "file:///etc/passwd", "https://a\n", "https://ä"})
        EXPECT_EQ(flaw(bad), Flaw::issuer) << bad;
    EXPECT_EQ(flaw("https://a", ""), Flaw::client);
    EXPECT_EQ(flaw("https://a", "b", "access_type=offline&prompt=login"), Flaw::none);
    for (const auto* bad :
         {"access_type", "=x", "a=b&&c=d", "state=x", "a=b&redirect_uri=http://evil", "a=b#c", "%73tate=x"})
        EXPECT_EQ(flaw("https://a", "b", bad), Flaw::parameters) << bad;
    AccountSetup setup;
    EXPECT_FALSE(setup.use({.issuer = "http://id.example.org", .clientID = "b"}, std::nullopt));
    EXPECT_EQ(setup.source.get(), IdentitySource{});
}

} // namespace
} // namespace velmora
