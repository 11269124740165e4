// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FakePlatform.h"
#include "model/InstallationManager.h"
#include "model/VersionNotice.h"
#include "model/WidgetSettings.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using Code = ServiceManager::ErrorCode;

struct InstallationManagerTest : testing::Test {
    FakePlatform machine;
    FakeServiceManager& service = *machine.serviceManager;
    FakePreferences& preferences = *machine.preferences;

    static InstallationManager& manager() { return Platform::current().singleton<InstallationManager>(); }
};

TEST_F(InstallationManagerTest, ADaemonThatIsEnabledNeedsNoInstallation)
{
    service.now = ServiceManager::Status::enabled;
    EXPECT_TRUE(manager().isInstallationCompleted.get());
    EXPECT_EQ(preferences.assignments, 0) << "what was found is not what was chosen";
    manager().isInstallationCompleted.set(false);
    EXPECT_FALSE(preferences.values.at("Velmora_DaemonInstalled"));
    EXPECT_EQ(preferences.assignments, 1);
}

TEST_F(InstallationManagerTest, EachOutcomeHasItsEnd)
{
    const std::tuple<std::optional<ServiceManager::Error>, bool, const char*> cases[] = {
        {std::nullopt, true, "none"},
        {{{Code::invalidSignature, "gone"}}, false, "Invalid code signature. Please re-download Velmora"},
        {{{Code::authorizationDenied, "no"}}, false, "Authorization denied. Admin privileges are required"},
        {{{Code::alreadyRegistered, "is there"}}, true, ""}, // by somebody else
        {{{Code::internalFailure, "Unit is masked."}}, false, "Installation failed: Unit is masked."},
    };
    for (const auto& [outcome, isCompleted, text] : cases) {
        SCOPED_TRACE(text);
        service.prompts.clear();
        preferences.values.clear();
        InstallationManager one;
        one.installationError.set("of last time");
        one.begin();
        one.begin();
        ASSERT_EQ(service.prompts.size(), 1U) << "one at a time";
        EXPECT_TRUE(one.isInstalling.get());
        EXPECT_EQ(one.installationProgress.get(), 0.1);
        EXPECT_EQ(one.installationError.get(), std::nullopt);

        service.prompts.front()(outcome);
        EXPECT_FALSE(one.isInstalling.get());
        EXPECT_EQ(one.installationProgress.get(), outcome ? 0 : 1);
        EXPECT_TRUE(one.installationError.get().value_or("none").starts_with(text));
        EXPECT_EQ(one.installationError.get() == "", outcome && isCompleted);
        EXPECT_EQ(one.isInstallationCompleted.get(), isCompleted);
        EXPECT_EQ(preferences.boolean("Velmora_DaemonInstalled"), isCompleted);
        EXPECT_EQ(preferences.values.size(), isCompleted ? 1U : 0U) << "a failure is nothing to remember";

        bool isSuccess = false;
        one.installDaemon([&](bool success) { isSuccess = success; });
        service.prompts.back()(outcome);
        EXPECT_EQ(isSuccess, !outcome);
    }
}

TEST_F(InstallationManagerTest, AnAnswerThatComesTooLateFindsNobody)
{
    {
        InstallationManager one;
        one.begin();
    }
    service.prompts.front()(std::nullopt);
    EXPECT_EQ(preferences.assignments, 0);
}

TEST(VersionNotice, IsForSystemsWithALimiter)
{
    const std::pair<SystemVersion, bool> cases[] = {
        {{25, 9}, false}, {{26, 3}, false}, {{26, 4}, true}, {{27, 3}, false}, {{27, 4}, true}};
    for (const auto& [system, isShown] : cases) {
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
    VersionNotice notice;
    for (int time = 0; time < 2; ++time) {
        notice.appeared();
        EXPECT_TRUE(notice.showMacOS264Banner.get());
        notice.showMacOS264Banner.set(false); // closed by other means
    }
    EXPECT_EQ(machine.preferences->assignments, 0);
    notice.dismissed();
    EXPECT_TRUE(machine.preferences->boolean("hasSeenMacOS264Banner"));
    VersionNotice ofTheNextStart;
    for (auto* one : {&notice, &ofTheNextStart}) {
        one->appeared();
        EXPECT_FALSE(one->showMacOS264Banner.get());
    }
}

TEST(WidgetSettings, AreAsTheyWereLeftAndBrokenPlacesAreNone)
{
    FakePlatform machine;
    {
        WidgetSettings small("small");
        small.isPinned.set(true);
        small.place.set(WidgetPlace{-12, 400});
    }
    EXPECT_TRUE(WidgetSettings("small").isPinned.get());
    EXPECT_FALSE(WidgetSettings("small").isShownAtLogIn.get());
    EXPECT_EQ(WidgetSettings("small").place.get(), (WidgetPlace{-12, 400}));
    EXPECT_EQ(WidgetSettings("medium").place.get(), std::nullopt);
    EXPECT_EQ(machine.preferences->assignments, 2) << "what was found is not written back";
    EXPECT_EQ(machine.log->count(), 0U);

    auto& text = machine.preferences->texts.begin()->second;
    for (const auto* broken : {"12", "12,", ",", "12,a", "12,4 ", "1,2,3", "40000,1", "1,-99999999999"}) {
        machine.log->clear();
        text = broken;
        EXPECT_EQ(WidgetSettings("small").place.get(), std::nullopt) << broken;
        EXPECT_EQ(machine.log->count("small widget"), 1U) << broken;
    }
}

} // namespace
} // namespace velmora
