// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/IdentityProvider.h"

#include <string>
#include <utility>
#include <vector>

namespace velmora {

/// Notes what it is asked, and answers when the test says so.
struct FakeIdentityProvider final : IdentityProvider {
    IdentitySource source;
    ClientSecret clientSecret;
    std::vector<PresentationAnchor> requests; ///< that were performed
    std::vector<std::string> asked;           ///< users whose state was
    std::vector<std::string> forgotten;
    std::function<void(Result)> complete;        ///< answers the last request
    std::function<void(CredentialState)> answer; ///< the last question

    void use(const IdentitySource& wanted, ClientSecret secret) override
    {
        source = wanted;
        clientSecret = std::move(secret);
    }
    void performRequest(const std::array<Scope, 2>&, const PresentationAnchor& anchor,
                        std::function<void(Result)> completed) override
    {
        requests.push_back(anchor);
        complete = std::move(completed);
    }
    void cancelRequest() override { complete(IdentityError{.code = IdentityError::canceled}); }
    void credentialState(const std::string& user, std::function<void(CredentialState)> answered) override
    {
        asked.push_back(user);
        answer = std::move(answered);
    }
    void forget(const std::string& user) override { forgotten.push_back(user); }
};

} // namespace velmora
