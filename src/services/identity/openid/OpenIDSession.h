// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"
#include "identity/IdentityModule.h"
#include "identity/OpenIDClient.h"
#include "identity/openid/AuthorizationRequest.h"
#include "identity/openid/Provider.h"
#include "identity/openid/RedirectListener.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace velmora::openid {

/// How long a session waits, beside the limit of each request.
struct SessionPatience {
    std::chrono::milliseconds before =
        std::chrono::seconds(15); ///< for the provider, until the browser opens
    std::chrono::milliseconds browser = std::chrono::minutes(5); ///< for the user to come back
    std::chrono::milliseconds after = std::chrono::seconds(30);  ///< for the provider, from then on
    std::chrono::milliseconds refresh = std::chrono::seconds(60);
    std::chrono::milliseconds revocation = std::chrono::seconds(30);
};

/// The way of a sign-in and what follows it, over the provider's endpoints and the listener that the browser
/// comes back to.
class OpenIDSession final : public OpenIDClient {
public:
    /// `now` is the time that tokens are judged by. Throws std::system_error where the kernel is out of
    /// descriptors.
    OpenIDSession(IdentityAccess access, std::function<Date()> now, SessionPatience patience = {});

    std::variant<SignedIn, IdentityProblem> signIn(const OpenBrowser& openBrowser) override;
    std::optional<IdentityProblem> reach() override;
    std::variant<std::string, IdentityProblem> refresh(const std::string& refreshToken,
                                                       const Keep& keep) override;
    void revoke(const std::string& refreshToken) override;
    void cancel() override;

private:
    template <typename Work>
    auto attempt(const Work& work) -> std::variant<decltype(work()), IdentityProblem>;
    SignedIn signedIn(RedirectListener& listener, const OpenBrowser& openBrowser);
    std::string codeFrom(Redirect& redirect);
    std::string brought(RedirectListener& listener, const SignInMarks& marks);
    UserInfo userOf(const Tokens& tokens, const SignInMarks& marks);
    void allow(std::chrono::milliseconds patience);

    SignInPages pages_;
    SessionPatience patience_;
    FileDescriptor interruption_; ///< readable once canceled
    Provider provider_;
};

} // namespace velmora::openid
