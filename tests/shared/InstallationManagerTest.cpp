// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/InstallationManager.h"

#include "FakePlatform.h"

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
    const struct {
        const char* what;
        std::optional<ServiceManager::Error> outcome;
        bool isCompleted;
        double progress;
        std::optional<std::string> text;
    } cases[] = {
        {"success", std::nullopt, true, 1, std::nullopt},
        {"missing or damaged",
         {{Code::invalidSignature, "gone"}},
         false,
         0,
         "Invalid code signature. Please re-download Velmora from https://velmora.app."},
        {"refused",
         {{Code::authorizationDenied, "no"}},
         false,
         0,
         "Authorization denied. Admin privileges are required to install the Velmora daemon."},
        {"by somebody else", {{Code::alreadyRegistered, "is there"}}, true, 0, ""},
        {"any other",
         {{Code::internalFailure, "Unit is masked."}},
         false,
         0,
         "Installation failed: Unit is masked."},
    };
    for (const auto& [what, outcome, isCompleted, progress, text] : cases) {
        SCOPED_TRACE(what);
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
        EXPECT_EQ(one.installationProgress.get(), progress);
        EXPECT_EQ(one.installationError.get(), text);
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

} // namespace
} // namespace velmora
