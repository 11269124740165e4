// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "identity/IdentityModule.h"
#include "identity/ProviderThread.h"
#include "platform/IdentityProvider.h"
#include "platform/Log.h"
#include "platform/MainLoop.h"
#include "platform/SecretStore.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace velmora {

/// Says who the user is by OpenID Connect, in the user's browser. Providers are asked on a thread of its own,
/// one request after the other: a check of a sign-in and a revocation give way to a user who signs in, unless
/// the check awaits an answer that counts. A user is forgotten on another thread, which waits for the secret
/// store alone.
///
/// What has a sign-in outlive this run is in the secret store, under KeptSignIns::service. A user for whom
/// there is nothing is `notFound`; where the store does not answer, or keeps a sign-in with another provider
/// or client than the one in use, or one without a token, nobody can be asked: `unknown`.
class OpenIDProvider final : public IdentityProvider {
public:
    struct Setup {
        std::shared_ptr<MainLoop> loop;
        std::shared_ptr<Log> log;
        std::shared_ptr<SecretStore> secrets; ///< cancelled when the provider goes: not to be shared
        /// Null where the module is missing. On the provider's thread.
        std::function<std::unique_ptr<OpenIDClient>(IdentityAccess access)> open;
        /// False where no browser could be opened; `failed` is called where that turns out later, at most
        /// once, on any thread. On the provider's thread.
        std::function<bool(const std::string& url, const PresentationAnchor& anchor,
                           std::function<void()> failed)>
            openBrowser;
    };

    explicit OpenIDProvider(Setup setup);
    OpenIDProvider(const OpenIDProvider&) = delete;
    OpenIDProvider& operator=(const OpenIDProvider&) = delete;

    /// Waits for an answer that is on the way, up to 2 s: the token in it is the only one that counts from
    /// then on. The secret store gets 200 ms for what it has not taken or removed. All else is ended at once.
    ~OpenIDProvider() override;

    void use(const IdentitySource& source, ClientSecret secret) override;
    void performRequest(const std::array<Scope, 2>& scopes, const PresentationAnchor& anchor,
                        std::function<void(Result)> completed) override;
    void cancelRequest() override;
    void credentialState(const std::string& user,
                         std::function<void(CredentialState state)> answered) override;
    void forget(const std::string& user) override;

private:
    class Desk;
    class Request;

    template <typename Answer>
    void ask(Urgency urgency, std::function<Answer(Desk&)> work, const Answer& instead,
             std::function<void(Answer)> answered);
    void offerLater();

    Lifetime lifetime_;
    std::shared_ptr<Desk> desk_;
    IdentityAccess inUse_;
    std::weak_ptr<Request> request_; ///< the last that was performed
    MainLoop::Timer nextOffer_;      ///< of tokens that the secret store did not take
    std::size_t offers_ = 0;
};

} // namespace velmora
