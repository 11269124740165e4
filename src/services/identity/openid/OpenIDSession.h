// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"
#include "identity/IdentityModule.h"
#include "identity/OpenIDClient.h"
#include "identity/openid/AuthorizationRequest.h"
#include "identity/openid/Provider.h"
#include "identity/openid/RedirectListener.h"

#include <functional>
#include <string>
#include <variant>

namespace velmora::openid {

/// The way of a sign-in and what follows it, over the provider's endpoints and the listener that the browser
/// comes back to.
class OpenIDSession final : public OpenIDClient {
public:
    /// `now` is the time that tokens are judged by. Throws std::system_error where the kernel is out of
    /// descriptors.
    OpenIDSession(IdentityAccess access, std::function<Date()> now);

    std::variant<SignedIn, IdentityProblem> signIn(const OpenBrowser& openBrowser) override;
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
    void allow(std::chrono::seconds patience);

    SignInPages pages_;
    FileDescriptor interruption_; ///< readable once canceled
    Provider provider_;
};

} // namespace velmora::openid
