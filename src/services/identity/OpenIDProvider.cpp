// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/OpenIDProvider.h"

#include "base/Text.h"
#include "identity/KeptSignIns.h"
#include "identity/ProviderThread.h"
#include "texts/AccountTexts.h"

#include <atomic>
#include <exception>
#include <optional>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "OpenIDProvider";

bool isSameClient(const IdentitySource& one, const IdentitySource& other)
{
    return one.issuer == other.issuer && one.clientID == other.clientID;
}

IdentityError errorOf(IdentityFault fault)
{
    const bool isCanceled = fault == IdentityFault::canceled;
    return {.code = isCanceled ? IdentityError::canceled : IdentityError::failed,
            .localizedDescription = account::faultText(fault)};
}

SignInPages pages()
{
    return {.signedIn = account::signedInPage(),
            .canceled = account::canceledPage(),
            .failed = account::failedPage()};
}

} // namespace

/// What is done on the provider's thread. It owns all that it needs, and may outlive the provider.
class OpenIDProvider::Desk {
public:
    explicit Desk(Setup setup) : setup_(std::move(setup)), kept_(setup_.secrets, setup_.log) {}

    const Setup& setup() const { return setup_; }
    ProviderThread& thread() { return *thread_; }

    Result signIn(const IdentityAccess& access, const PresentationAnchor& anchor,
                  const std::shared_ptr<Conversation>& conversation);
    CredentialState state(const IdentityAccess& access, const std::string& user);
    void forget(const IdentityAccess& access, const std::string& user);

    /// What `work` gives, or `instead` where it throws.
    template <typename Answer>
    Answer tried(const std::function<Answer(Desk&)>& work, const Answer& instead)
    try {
        return work(*this);
    } catch (const std::exception& error) {
        setup_.log->error(category,
                          std::string("Could not ask the identity provider: ") + error.what() + ".");
        return instead;
    }

private:
    using Problem = IdentityProblem;
    using SignedIn = OpenIDClient::SignedIn;

    std::optional<Problem> begin(const IdentityAccess& access,
                                 const std::shared_ptr<Conversation>& conversation);
    std::variant<SignedIn, Problem> ask(const PresentationAnchor& anchor,
                                        const std::shared_ptr<Conversation>& conversation);
    Result settle(const IdentityAccess& access, const SignedIn& signedIn, Conversation& conversation);
    CredentialState confirm(const IdentityAccess& access, const std::string& user, const KeptSignIn& kept);
    void warn(const std::string& text) { setup_.log->warning(category, text); }

    Setup setup_;
    KeptSignIns kept_;
    std::shared_ptr<ProviderThread> thread_ = std::make_shared<ProviderThread>();
};

std::optional<IdentityProblem> OpenIDProvider::Desk::begin(const IdentityAccess& access,
                                                           const std::shared_ptr<Conversation>& conversation)
{
    const Problem ended{IdentityFault::canceled, "It was ended."};
    if (!thread_->enter(conversation)) return ended;
    auto client = setup_.open(access);
    if (!client) return Problem{IdentityFault::noModule, "The module that does it cannot be used."};
    if (!conversation->begin(std::move(client))) return ended;
    return std::nullopt;
}

// -- A sign-in

std::variant<OpenIDClient::SignedIn, IdentityProblem>
OpenIDProvider::Desk::ask(const PresentationAnchor& anchor, const std::shared_ptr<Conversation>& conversation)
{
    const auto hasNoBrowser = std::make_shared<std::atomic<bool>>(false);
    const auto fail = [hasNoBrowser, weak = std::weak_ptr(conversation)] {
        *hasNoBrowser = true;
        if (const auto kept = weak.lock()) kept->interrupt();
    };
    auto answer = conversation->client().signIn(
        [&](const std::string& url) { return setup_.openBrowser(url, anchor, fail); });
    if (*hasNoBrowser && std::holds_alternative<Problem>(answer))
        return Problem{IdentityFault::noBrowser, "The program that opens the browser failed."};
    return answer;
}

IdentityProvider::Result OpenIDProvider::Desk::signIn(const IdentityAccess& access,
                                                      const PresentationAnchor& anchor,
                                                      const std::shared_ptr<Conversation>& conversation)
{
    auto problem = begin(access, conversation);
    if (!problem) {
        const auto answer = ask(anchor, conversation);
        if (const auto* signedIn = std::get_if<SignedIn>(&answer))
            return settle(access, *signedIn, *conversation);
        problem = std::get<Problem>(answer);
    }
    if (problem->fault != IdentityFault::canceled)
        warn("The sign-in with " + access.source.issuer + " did not succeed. " + problem->detail);
    return errorOf(problem->fault);
}

/// A provider may give a token at the first sign-in of a user alone: the one that is kept stays then.
IdentityProvider::Result OpenIDProvider::Desk::settle(const IdentityAccess& access, const SignedIn& signedIn,
                                                      Conversation& conversation)
{
    const auto& user = signedIn.credential.user;
    const auto found = kept_.find(user);
    const auto* before = std::get_if<KeptSignIn>(&found);
    const bool isSame = before && isSameClient(before->source, access.source);
    KeptSignIn now{.source = {.issuer = access.source.issuer, .clientID = access.source.clientID},
                   .refreshToken = signedIn.refreshToken};
    if (now.refreshToken.empty() && isSame) now.refreshToken = before->refreshToken;
    if (now.refreshToken.empty())
        warn(access.source.issuer +
             " gave no token for later, so the sign-in cannot be confirmed in the next "
             "run: it may want another parameter for that.");
    kept_.keep(user, now);
    if (conversation.finish()) return signedIn.credential;
    // Cancelled meanwhile. To revoke the new token could end the sign-in that was kept, too.
    if (before)
        kept_.keep(user, *before);
    else
        forget(access, user);
    return errorOf(IdentityFault::canceled);
}

// -- Later

IdentityProvider::CredentialState OpenIDProvider::Desk::state(const IdentityAccess& access,
                                                              const std::string& user)
{
    const auto found = kept_.find(user);
    if (const auto* status = std::get_if<SecretStatus>(&found))
        return *status == SecretStatus::notFound ? CredentialState::notFound : CredentialState::unknown;
    const auto& kept = std::get<KeptSignIn>(found);
    if (!isSameClient(kept.source, access.source)) {
        warn("The sign-in that is kept is one with " + kept.source.issuer + " for the client " +
             kept.source.clientID + ", which is not in use now: nobody is asked whether it still holds.");
        return CredentialState::unknown;
    }
    return kept.refreshToken.empty() ? CredentialState::unknown : confirm(access, user, kept);
}

IdentityProvider::CredentialState
OpenIDProvider::Desk::confirm(const IdentityAccess& access, const std::string& user, const KeptSignIn& kept)
{
    const auto conversation = std::make_shared<Conversation>(Conversation::Ending::whenAnswered);
    auto problem = begin(access, conversation);
    if (!problem) {
        const auto keep = [&](const std::string& token) {
            kept_.keep(user, {.source = kept.source, .refreshToken = token});
        };
        const auto answer = conversation->client().refresh(kept.refreshToken, keep);
        if (const auto* whose = std::get_if<std::string>(&answer))
            return *whose == user ? CredentialState::authorized : CredentialState::transferred;
        problem = std::get<Problem>(answer);
    }
    if (problem->fault != IdentityFault::canceled)
        warn(access.source.issuer + " did not confirm the sign-in. " + problem->detail);
    if (problem->fault != IdentityFault::revoked) return CredentialState::unknown;
    kept_.remove(user); // or a void token would stay for ever
    return CredentialState::revoked;
}

/// It is gone here before anybody else is asked.
void OpenIDProvider::Desk::forget(const IdentityAccess& access, const std::string& user)
{
    const auto found = kept_.find(user);
    kept_.remove(user);
    const auto* kept = std::get_if<KeptSignIn>(&found);
    if (!kept || kept->refreshToken.empty()) return;
    IdentityAccess its{.source = kept->source, .secret = [] { return std::string(); }};
    if (isSameClient(kept->source, access.source)) its.secret = access.secret;
    const auto conversation = std::make_shared<Conversation>(Conversation::Ending::atOnce);
    if (!begin(its, conversation)) conversation->client().revoke(kept->refreshToken);
}

// -- The provider

OpenIDProvider::OpenIDProvider(Setup setup) : desk_(std::make_shared<Desk>(std::move(setup))) {}

OpenIDProvider::~OpenIDProvider()
{
    desk_->thread().end([secrets = desk_->setup().secrets] { secrets->cancel(); });
}

void OpenIDProvider::use(const IdentitySource& source, ClientSecret secret)
{
    inUse_ = {.source = source, .secret = std::move(secret)};
}

/// `answered` gets what `work` gives, or `instead`: where that throws, or there is no thread for it.
template <typename Answer>
void OpenIDProvider::ask(std::function<Answer(Desk&)> work, const Answer& instead,
                         std::function<void(Answer)> answered)
{
    const bool isRunning = desk_->thread().run([desk = desk_, work = std::move(work), instead, answered] {
        const auto answer = desk->tried(work, instead);
        if (!desk->thread().isEnding()) answered(answer);
    });
    if (isRunning) return;
    desk_->setup().log->error(category, "The system has no thread to give: the provider is not asked.");
    desk_->setup().loop->post([answered = std::move(answered), instead] { answered(instead); });
}

void OpenIDProvider::performRequest(const std::array<Scope, 2>&, const PresentationAnchor& anchor,
                                    std::function<void(Result)> completed)
{
    cancelRequest();
    if (inUse_.source.issuer.empty())
        return desk_->setup().loop->post(
            [completed = std::move(completed)] { completed(errorOf(IdentityFault::noProvider)); });
    auto conversation = std::make_shared<Conversation>(Conversation::Ending::atOnce);
    request_ = conversation;
    auto access = inUse_;
    access.pages = pages();
    ask<Result>([access = std::move(access), anchor, conversation = std::move(conversation)](
                    Desk& desk) { return desk.signIn(access, anchor, conversation); },
                errorOf(IdentityFault::invalid), std::move(completed));
}

void OpenIDProvider::cancelRequest()
{
    if (const auto underWay = request_.lock()) underWay->cancel();
}

void OpenIDProvider::credentialState(const std::string& user,
                                     std::function<void(CredentialState state)> answered)
{
    ask<CredentialState>([access = inUse_, user](Desk& desk) { return desk.state(access, user); },
                         CredentialState::unknown, std::move(answered));
}

void OpenIDProvider::forget(const std::string& user)
{
    ask<bool>(
        [access = inUse_, user](Desk& desk) {
            desk.forget(access, user);
            return true;
        },
        false, [](bool) {});
}

} // namespace velmora
