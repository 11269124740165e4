// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FakePlatform.h"
#include "account/DeviceIdentity.h"
#include "account/KeychainHelper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmora {
namespace {

using testing::MatchesRegex;

struct SecretsTest : testing::Test {
    FakePlatform machine;
    FakeSecretStore& store = *machine.secretStore;
    const KeychainHelper& keychain = KeychainHelper::shared();
};

TEST_F(SecretsTest, SavingDeletesAndAddsTheSameItem)
{
    EXPECT_TRUE(keychain.save("one", "service", "account"));
    EXPECT_TRUE(keychain.save("", "service", "account"));
    EXPECT_TRUE(keychain.save("two", "other", "account"));
    EXPECT_EQ(keychain.read("service", "account"), "") << "empty, and there";
    EXPECT_EQ(keychain.read("other", "account"), "two");
    ASSERT_EQ(store.removed.size(), 3U);
    EXPECT_EQ(store.removed.back().data, "two");
    EXPECT_EQ(store.removed.back().accessibility, SecretItem::Accessibility::whenUnlockedThisDeviceOnly);
    EXPECT_EQ(store.added.back().accessibility, SecretItem::Accessibility::whenUnlockedThisDeviceOnly);
    EXPECT_TRUE(keychain.remove("other", "account"));
    EXPECT_FALSE(store.removed.back().data);
    EXPECT_FALSE(keychain.remove("other", "account"));
    EXPECT_FALSE(keychain.read("other", "account"));

    store.removed.clear();
    EXPECT_FALSE(keychain.save("\xff", "service", "account"));
    EXPECT_TRUE(store.removed.empty()) << "refused before the store is touched";
    store.items.begin()->second = "\xc3";
    EXPECT_FALSE(keychain.read("service", "account"));
    store.isAvailable = false;
    EXPECT_FALSE(keychain.save("three", "service", "account"));
    EXPECT_FALSE(keychain.read("service", "account"));
    EXPECT_EQ(machine.log->count(), 0U);
}

TEST_F(SecretsTest, WhatIsWipedIsGoneFromMemory)
{
    std::string secret = "a secret that is too long for the short form";
    const char* const bytes = secret.data();
    wipe(secret);
    EXPECT_TRUE(secret.empty());
    EXPECT_EQ(std::count(bytes, bytes + 44, '\0'), 44);
}

/// A program's life, over and over, with what is left of the one before.
struct DeviceIdentityTest : SecretsTest {
    const std::filesystem::path file = machine.folder.path() / "support/Velmora/device-identity";

    std::string identityInOneLife()
    {
        DeviceIdentity identity;
        std::string told, toldLate;
        identity.whenKnown([&](const auto& uuid) { told = uuid; });
        settle();
        EXPECT_NE(told, "");
        identity.whenKnown([&](const auto& uuid) { toldLate = uuid; });
        settle();
        EXPECT_EQ(toldLate, told);
        return told;
    }
    void settle()
    {
        machine.loop->runPosted();
        machine.queue("velmora-ident")->run();
        machine.loop->runPosted();
    }
    std::string& stored() { return store.items[{"app.velmora.identity", "device_uuid"}]; }
    std::string filed() const { return machine.folder.read(file); }
};

TEST_F(DeviceIdentityTest, StaysTheSameWhateverIsLost)
{
    const auto first = identityInOneLife();
    EXPECT_THAT(first, MatchesRegex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"));
    EXPECT_EQ(stored(), first);
    EXPECT_EQ(filed(), first + "\n");
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms{0600});
    EXPECT_EQ(std::filesystem::status(file.parent_path()).permissions(), std::filesystem::perms{0700});

    store.isAvailable = false;
    EXPECT_EQ(identityInOneLife(), first) << "locked";
    EXPECT_EQ(machine.log->count("kept in a file alone"), 1U);
    store.isAvailable = true;
    store.items.clear();
    EXPECT_EQ(identityInOneLife(), first) << "a new keyring";
    EXPECT_EQ(stored(), first);
    std::filesystem::remove(file);
    EXPECT_EQ(identityInOneLife(), first) << "a cleared folder";
    EXPECT_EQ(filed(), first + "\n");
    std::filesystem::permissions(file, std::filesystem::perms{0644});
    EXPECT_EQ(identityInOneLife(), first) << "a backup without modes";
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms{0600});
}

TEST_F(DeviceIdentityTest, WhatCannotBeReadIsNotReplaced)
{
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::create_symlink("not/mounted", file);
    DeviceIdentity identity;
    identity.whenKnown([](const auto& uuid) { ADD_FAILURE() << uuid; });
    settle();
    EXPECT_TRUE(std::filesystem::is_symlink(file));
    EXPECT_TRUE(store.items.empty());
    EXPECT_EQ(machine.log->count("This machine gets no identity: could not read"), 1U);
}

TEST_F(DeviceIdentityTest, TheStoresCountsAndNonsenseIsNone)
{
    const std::string one = "0B5C6B7E-3F0E-4D0C-9B7A-1F2E3D4C5B6A", other = "1" + one.substr(1);
    machine.folder.write(file, one);
    stored() = other;
    EXPECT_EQ(identityInOneLife(), other);
    EXPECT_EQ(filed(), other + "\n");
    for (const std::string nonsense : {"", "hello", "0B5C6B7E-3F0E-4D0C-9B7A-1F2E3D4C5B6G", "\xff"}) {
        stored() = nonsense;
        EXPECT_EQ(identityInOneLife(), other);
        EXPECT_EQ(stored(), other);
        machine.folder.write(file, nonsense);
        EXPECT_EQ(identityInOneLife(), other);
        EXPECT_EQ(filed(), other + "\n");
    }
}

TEST_F(DeviceIdentityTest, WaitsForTheStoreAndNotForItsEnd)
{
    store.holdsReady = true;
    auto identity = std::make_optional<DeviceIdentity>();
    settle();
    EXPECT_FALSE(std::filesystem::exists(file));
    store.becomeReady();
    identity.reset();
    settle();
    EXPECT_TRUE(store.isCancelled);
    EXPECT_TRUE(store.items.empty()) << "found by nobody who is gone";

    machine.platform.applicationSupportDirectories.clear();
    store.holdsReady = false;
    const auto withoutFolder = identityInOneLife();
    EXPECT_EQ(withoutFolder, stored());
}

} // namespace
} // namespace velmora
