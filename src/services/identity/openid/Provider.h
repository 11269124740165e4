// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"
#include "base/Wipe.h"
#include "identity/IdentityModule.h"
#include "identity/openid/Answers.h"
#include "identity/openid/HttpClient.h"
#include "identity/openid/IdentityToken.h"

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmora::openid {

/// Thrown by what a provider is asked.
class ProviderFailure : public std::exception {
public:
    explicit ProviderFailure(IdentityProblem told) : problem(std::move(told)) {}
    const char* what() const noexcept override { return problem.detail.c_str(); }

    IdentityProblem problem;
};

/// What it means that the provider refuses with this error of OAuth's: "invalid_client".
IdentityFault faultOfError(const std::string& error);

/// Overwrites a text at the end of a scope.
class Wiped {
public:
    explicit Wiped(std::string& text) : text_(text) {}
    ~Wiped() { wipe(text_); }
    Wiped(const Wiped&) = delete;
    Wiped& operator=(const Wiped&) = delete;

private:
    std::string& text_;
};

/// Tokens that are overwritten once they are needed no more.
struct Tokens : TokenAnswer {
    explicit Tokens(TokenAnswer answer) : TokenAnswer(std::move(answer)) {}
    Tokens(Tokens&&) noexcept = default;
    Tokens& operator=(Tokens&&) = delete;
    ~Tokens();
};

/// The provider's endpoints as functions, which believe no answer before it is checked. All of them ask over
/// the network, until `end` at the latest, and throw ProviderFailure.
class Provider {
public:
    /// `now` is the time that tokens are judged by.
    Provider(IdentityAccess access, std::function<Date()> now);

    HttpClient::Deadline end = HttpClient::Deadline::max();

    /// Ends what is under way and all that follows. Any thread.
    void cancel() { http_.cancel(); }
    bool isCanceled() const { return http_.isCanceled(); }

    const IdentitySource& source() const { return access_.source; }

    /// What the provider announces; asked for once.
    const Discovery& discovery();

    /// For a code, with what proves that it is this sign-in's.
    Tokens exchangeCode(const std::string& code, const std::string& verifier,
                        const std::string& redirectAddress);
    /// For a refresh token, which counts as used from here on. `revoked` where it holds no more. Its
    /// successor is kept before the rest of the answer is judged.
    Tokens renew(const std::string& refreshToken, const OpenIDClient::Keep& keep);

    /// Whom the identity token that came with the others speaks of.
    UserInfo identityIn(const Tokens& tokens, const std::optional<std::string>& nonce);
    /// The user as their page at the provider has it; nothing where there is no such page.
    std::optional<UserInfo> userinfo(const Tokens& tokens);

    /// Nothing where the provider has no way for it.
    void revoke(const std::string& refreshToken);

private:
    struct Authentication;
    Authentication authentication();
    HttpAnswer ask(HttpRequest request);
    std::string page(const std::string& url, std::string authorization = {});
    Tokens tokensFrom(HttpAnswer answer, IdentityFault whenVoid);
    std::vector<ProviderKey> keys();

    IdentityAccess access_;
    std::function<Date()> now_;
    HttpClient http_;
    std::optional<Discovery> discovery_;
};

} // namespace velmora::openid
