// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ControlTest.h"
#include "base/WholeFile.h"
#include "bus/Exports.h"

#include <filesystem>
#include <nlohmann/json.hpp>

namespace velmora {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using State = IdentityProvider::CredentialState;
using namespace std::chrono_literals;

/// velmoractl over the account of an application that is a part of this test, as is the provider.
struct AccountControlTest : ControlTest {
    AccountControlTest() : ControlTest("account") {}
    ~AccountControlTest() override { object.reset(); }

    void startApplication()
    {
        exports::serve(ControlTest::startApplication(wire::face::account::face), account);
    }
    /// Signs in as somebody, or not, once the browser is to be opened.
    Outcome signIn(const IdentityProvider::Result& result)
    {
        auto ended = begin("sign-in");
        EXPECT_TRUE(eventually([&] { return provider.complete != nullptr; }));
        std::exchange(provider.complete, nullptr)(result);
        return await(std::move(ended));
    }

    void serve() override { isStoreSlow ? LoopTest::serve() : ControlTest::serve(); }

    bool isStoreSlow = false; ///< it answers nobody
    FakeIdentityProvider& provider = *machine.identityProvider;
    AccountSetup account;
};

TEST_F(AccountControlTest, UnderstandsACommandLineOrSaysWhatIsWrong)
{
    const std::tuple<const char*, int, const char*> cases[] = {
        {"rename", 2, "\"account\" has no command \"rename\""},
        {"sign-in now", 2, "\"now\" is one word too many"},
        {"sign-in --secret", 2, "\"sign-in\" has no option"},
        {"--secret", 2, "\"account\" has no option"},
        {"provider", 2, "needs the issuer"},
        {"provider http://login.example velmora", 2, "https://"},
        {"provider https://login.example", 2, "needs a client"},
        {"provider https://login.example velmora --parameters state=1", 2, "sets itself"},
        {"provider https://login.example velmora more", 2, "one word too many"},
        {"provider https://login.example velmora --none", 2, "stands alone"},
        {"provider https://login.example velmora --secret-file", 2, "needs a value"},
        {"provider https://login.example velmora --secret-file /dev/null", 1, "regular file"},
        {"", 3, "Velmora does not run"},
    };
    for (const auto& [words, status, said] : cases) expectOutcome(words, status, said);
}

TEST_F(AccountControlTest, SetsAProviderWithASecretThatNobodySees)
{
    startApplication();
    const std::string client = "provider https://login.example velmora ";
    const auto typed = control(client + "--secret --parameters access_type=offline", "open sesame\n");
    EXPECT_EQ(typed.status, 0) << typed.said;
    EXPECT_THAT(typed.said, HasSubstr("kept in the secret store"));
    EXPECT_THAT(typed.said, Not(HasSubstr("sesame")));
    EXPECT_EQ(provider.source.parameters, "access_type=offline");
    EXPECT_EQ(provider.clientSecret(), "open sesame");

    const auto file = machine.folder.path() / "secret";
    writeWholeFile(file, "another one\n");
    expectOutcome(client + "--secret-file " + file.string(), 1, "others may use it");
    std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    expectOutcome(client + "--secret-file " + file.string(), 0, "kept in the secret store");
    EXPECT_EQ(provider.clientSecret(), "another one");

    machine.secretStore->isAvailable = false;
    isStoreSlow = true;
    auto refused = begin(client + "--secret-file " + file.string());
    ASSERT_TRUE(eventually([&] { return account.isKeepingSecret.get(); }));
    expectOutcome("--json", 0, "\"isKeepingSecret\":true");
    isStoreSlow = false;
    EXPECT_EQ(await(std::move(refused)).status, 1) << "though one of before is kept";
    machine.secretStore->isAvailable = true;
    expectOutcome("provider --none", 0, "No identity provider");
    expectOutcome("sign-in", 1, "No identity provider");
    machine.secretStore->isAvailable = false;
    EXPECT_THAT(control(client + "--secret", "open sesame\n").said, HasSubstr("locked"));
    EXPECT_EQ(account.source.get(), IdentitySource{});
    machine.secretStore->isAvailable = true;
    expectOutcome(client + "--secret-file " + file.string(), 0, "kept in the secret store");
}

TEST_F(AccountControlTest, SignsInAndOutAndSaysWhatHasCome)
{
    startApplication();
    expectOutcome("check", 1, "No identity provider");
    machine.secretStore->isAvailable = false;
    expectOutcome("provider https://login.example velmora", 0, "https://login.example");
    expectOutcome("check", 1, "is locked");
    machine.secretStore->isAvailable = true;
    expectOutcome("check", 1, "Nobody is signed in");
    const IdentityCredential ada{
        .user = "1", .givenName = "Ada", .familyName = "Love\x1blace", .email = "ada@example.org"};
    EXPECT_THAT(signIn(IdentityError{.code = IdentityError::canceled}).said, HasSubstr("cancelled"));
    EXPECT_THAT(signIn(IdentityError{.localizedDescription = "It burns."}).said, HasSubstr("It burns."));
    const auto done = signIn(ada);
    EXPECT_EQ(done.status, 0);
    EXPECT_THAT(done.said, HasSubstr("ada@example.org"));
    EXPECT_THAT(done.said, Not(HasSubstr("\x1b")));
    const auto told = json::parse(control("--json").said, nullptr, false);
    EXPECT_EQ(told["isSignedIn"], true);
    EXPECT_EQ(told["userEmail"], "ada@example.org");
    EXPECT_THAT(told["signedInSince"].get<std::string>(), testing::EndsWith("Z"));
    EXPECT_THAT(signIn(IdentityError{.code = IdentityError::canceled}).said, HasSubstr("cancelled"))
        << "though Ada still is signed in";

    auto ended = begin("sign-in");
    ASSERT_TRUE(eventually([&] { return provider.complete != nullptr; }));
    expectOutcome("sign-in", 1, "under way");
    expectOutcome("cancel", 0, "Signed in since");
    EXPECT_EQ(await(std::move(ended)).status, 1);
    expectOutcome("check", 0, "Signed in since");
    expectOutcome("sign-out", 0, "Nobody is signed in");
    EXPECT_EQ(provider.forgotten, std::vector<std::string>{"1"});
}

} // namespace
} // namespace velmora
