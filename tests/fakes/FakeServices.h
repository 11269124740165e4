// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Preferences.h"
#include "platform/ServiceManager.h"

#include <map>
#include <string>
#include <vector>

namespace velmora {

/// Preferences that last as long as the test.
struct FakePreferences final : Preferences {
    std::map<std::string, bool, std::less<>> values;
    std::map<std::string, std::string, std::less<>> texts;
    int assignments = 0;

    bool boolean(std::string_view key) const override
    {
        const auto found = values.find(key);
        return found != values.end() && found->second;
    }
    void set(std::string_view key, bool value) override
    {
        ++assignments;
        values.insert_or_assign(std::string(key), value);
    }
    std::string text(std::string_view key) const override
    {
        const auto found = texts.find(key);
        return found == texts.end() ? "" : found->second;
    }
    void setText(std::string_view key, std::string_view value) override
    {
        ++assignments;
        texts.insert_or_assign(std::string(key), std::string(value));
    }
};

/// A service manager whose prompts stand until the test answers them.
struct FakeServiceManager final : ServiceManager {
    Status now = Status::notRegistered;
    std::vector<Completion> prompts;

    Status status() override { return now; }
    void registerService(Completion completion) override { prompts.push_back(std::move(completion)); }
};

} // namespace velmora
