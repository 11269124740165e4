// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/OpenIDProvider.h"

#include "base/Text.h"
#include "identity/KeptSignIns.h"
#include "identity/ProviderThread.h"
#include "texts/AccountTexts.h"

#include <array>
#include <atomic>
#include <chrono>
#include <exception>
#include <optional>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "OpenIDProvider";

/// After each of these the secret store is offered what it did not take.
constexpr std::array<std::chrono::seconds, 5> pauses{std::chrono::seconds{5}, std::chrono::seconds{30},
                                                     std::chrono::minutes{2}, std::chrono::minutes{10},
                                                     std::chrono::minutes{60}};

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
class OpenIDProvider::Desk : public std::enable_shared_from_this<Desk> {
public:
    explicit Desk(Setup setup) : kept(setup.secrets, setup.log), setup_(std::move(setup)) {}

    const Setup& setup() const { return setup_; }
    ProviderThread& thread() { return *thread_; }
    ProviderThread& storeThread() { return *storeThread_; }

    Result signIn(const IdentityAccess& access, const PresentationAnchor& anchor,
                  const std::shared_ptr<Conversation>& conversation);
    CredentialState state(const IdentityAccess& access, const std::string& user);
    /// On the store's thread, as it waits for nobody else.
    void removeForgotten(const IdentityAccess& access, const std::string& user);

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

    KeptSignIns kept;

private:
    using Problem = IdentityProblem;
    using SignedIn = OpenIDClient::SignedIn;
    struct Known {
        KeptSignIn signIn;
        KeptSignIns::Forgets forgets; ///< before it was found
    };

    std::optional<Problem> begin(const IdentityAccess& access,
                                 const std::shared_ptr<Conversation>& conversation);
    std::variant<SignedIn, Problem> ask(const PresentationAnchor& anchor,
                                        const std::shared_ptr<Conversation>& conversation);
    Result settle(const IdentityAccess& access, const SignedIn& signedIn, Conversation& conversation);
    CredentialState confirm(const IdentityAccess& access, const std::string& user, const Known& found);
    std::variant<std::string, Problem> refresh(const IdentityAccess& access, const std::string& user,
                                               const Known& found);
    void revokeLater(const IdentityAccess& access, const KeptSignIn& signIn);
    void warn(const std::string& text) { setup_.log->warning(category, text); }

    Setup setup_;
    std::shared_ptr<ProviderThread> thread_ = std::make_shared<ProviderThread>("velmora-openid");
    std::shared_ptr<ProviderThread> storeThread_ = std::make_shared<ProviderThread>("velmora-tokens");
};

/// A sign-in that is under way. Its caller is answered once: with its result, or as canceled, whichever comes
/// first.
class OpenIDProvider::Request {
public:
    explicit Request(std::function<void(Result)> completed) : completed_(std::move(completed)) {}

    const std::shared_ptr<Conversation> conversation = std::make_shared<Conversation>(Urgency::person);

    void complete(const Result& result)
    {
        if (!isComplete_.exchange(true)) completed_(result);
    }

private:
    std::function<void(Result)> completed_;
    std::atomic<bool> isComplete_ = false;
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
        if (const auto alive = weak.lock()) alive->interrupt();
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

/// A provider may give a token at the first sign-in of a user alone: the one that is kept stays then. A store
/// that does not say what it keeps is not asked for more while the user waits.
IdentityProvider::Result OpenIDProvider::Desk::settle(const IdentityAccess& access, const SignedIn& signedIn,
                                                      Conversation& conversation)
{
    const auto& user = signedIn.credential.user;
    const auto known = kept.forgets(user);
    const auto found = kept.find(user);
    const auto* before = std::get_if<KeptSignIn>(&found);
    const bool isSame = before && isSameClient(before->source, access.source);
    KeptSignIn now{.source = {.issuer = access.source.issuer, .clientID = access.source.clientID},
                   .refreshToken = signedIn.refreshToken};
    if (now.refreshToken.empty() && isSame) now.refreshToken = before->refreshToken;
    if (now.refreshToken.empty())
        warn(access.source.issuer +
             " gave no token for later, so the sign-in cannot be confirmed in the next "
             "run: it may want another parameter for that.");
    const auto* status = std::get_if<SecretStatus>(&found);
    if (!status || *status != SecretStatus::unavailable)
        kept.keep(user, now, known);
    else if (!now.refreshToken.empty()) // or an older one that lasts could be lost
        kept.putOff(user, now, known);
    if (conversation.finish()) return signedIn.credential;
    // Cancelled meanwhile. To revoke the new token could end the sign-in that was kept, too.
    if (before) {
        kept.keep(user, *before, known);
    } else {
        kept.forget(user);
        removeForgotten(access, user);
    }
    return errorOf(IdentityFault::canceled);
}

// -- Later

IdentityProvider::CredentialState OpenIDProvider::Desk::state(const IdentityAccess& access,
                                                              const std::string& user)
{
    const auto known = kept.forgets(user);
    const auto answer = kept.find(user);
    if (const auto* status = std::get_if<SecretStatus>(&answer))
        return *status == SecretStatus::notFound ? CredentialState::notFound : CredentialState::unknown;
    const auto& found = std::get<KeptSignIn>(answer);
    if (isSameClient(found.source, access.source) && !found.refreshToken.empty())
        return confirm(access, user, {found, known});
    if (found.refreshToken.empty())
        warn(found.source.issuer + " gave no token for later when the user signed in: it cannot be asked "
                                   "whether the sign-in still holds.");
    else
        warn("The sign-in that is kept is one with " + found.source.issuer + " for the client " +
             found.source.clientID + ", which is not in use now: nobody is asked whether it still holds.");
    return CredentialState::unknown;
}

/// Whose the token is. One that comes in its place, for a user who was forgotten meanwhile, goes back.
std::variant<std::string, IdentityProblem>
OpenIDProvider::Desk::refresh(const IdentityAccess& access, const std::string& user, const Known& found)
{
    const auto conversation = std::make_shared<Conversation>(Urgency::check);
    if (auto problem = begin(access, conversation)) return *problem;
    if (auto problem = conversation->client().reach()) return *problem;
    if (!conversation->commit()) return Problem{IdentityFault::canceled, "It was ended."};
    const auto keep = [&](const std::string& next) {
        const KeptSignIn signIn{.source = found.signIn.source, .refreshToken = next};
        if (!kept.keep(user, signIn, found.forgets)) revokeLater(access, signIn);
        conversation->answered();
    };
    return conversation->client().refresh(found.signIn.refreshToken, keep);
}

IdentityProvider::CredentialState OpenIDProvider::Desk::confirm(const IdentityAccess& access,
                                                                const std::string& user, const Known& found)
{
    const auto answer = refresh(access, user, found);
    if (const auto* whose = std::get_if<std::string>(&answer))
        return *whose == user ? CredentialState::authorized : CredentialState::transferred;
    const auto& problem = std::get<Problem>(answer);
    if (problem.fault != IdentityFault::canceled)
        warn(access.source.issuer + " did not confirm the sign-in. " + problem.detail);
    if (problem.fault != IdentityFault::revoked) return CredentialState::unknown;
    kept.forget(user); // or a void token would stay for ever
    kept.removeForgotten(user);
    return CredentialState::revoked;
}

void OpenIDProvider::Desk::removeForgotten(const IdentityAccess& access, const std::string& user)
{
    const auto gone = kept.removeForgotten(user);
    if (gone && !gone->refreshToken.empty()) revokeLater(access, *gone);
}

/// At its own issuer, with the secret in use where it is the same client's.
void OpenIDProvider::Desk::revokeLater(const IdentityAccess& access, const KeptSignIn& signIn)
{
    if (thread_->isEnding()) return;
    IdentityAccess its{.source = signIn.source, .secret = [] { return std::string(); }};
    if (isSameClient(signIn.source, access.source)) its.secret = access.secret;
    thread_->run(Urgency::courtesy, [self = shared_from_this(), its = std::move(its), signIn] {
        const auto conversation = std::make_shared<Conversation>(Urgency::courtesy);
        if (!self->begin(its, conversation)) conversation->client().revoke(signIn.refreshToken);
    });
}

// -- The provider

OpenIDProvider::OpenIDProvider(Setup setup) : desk_(std::make_shared<Desk>(std::move(setup)))
{
    const auto later = lifetime_.guard([this] {
        offers_ = 0;
        offerLater();
    });
    desk_->kept.onRefusal = [loop = desk_->setup().loop, later] { loop->post(later); };
}

OpenIDProvider::~OpenIDProvider()
{
    auto& thread = desk_->thread();
    auto& storeThread = desk_->storeThread();
    const bool isAsked = thread.end(); // it may still bring a token
    if (!desk_->kept.hasAllTaken())
        storeThread.run(Urgency::check, [desk = desk_] { desk->kept.offerAgain(); });
    const bool isKept = storeThread.end();
    if (isAsked && isKept) return;
    desk_->setup().secrets->cancel();
    thread.isDone();
    storeThread.isDone();
}

void OpenIDProvider::offerLater()
{
    if (offers_ == pauses.size()) return;
    const auto offer = [desk = desk_, loop = desk_->setup().loop,
                        later = lifetime_.guard([this] { offerLater(); })] {
        if (!desk->kept.offerAgain()) loop->post(later);
    };
    nextOffer_ = desk_->setup().loop->after(
        pauses.at(offers_++), [desk = desk_, offer] { desk->storeThread().run(Urgency::check, offer); });
}

void OpenIDProvider::use(const IdentitySource& source, ClientSecret secret)
{
    inUse_ = {.source = source, .secret = std::move(secret)};
}

/// `answered` gets what `work` gives, or `instead`: where that throws, or there is no thread for it.
template <typename Answer>
void OpenIDProvider::ask(Urgency urgency, std::function<Answer(Desk&)> work, const Answer& instead,
                         std::function<void(Answer)> answered)
{
    const bool isRunning =
        desk_->thread().run(urgency, [desk = desk_, work = std::move(work), instead, answered] {
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
    const auto request = std::make_shared<Request>(std::move(completed));
    request_ = request;
    auto access = inUse_;
    access.pages = pages();
    ask<Result>(
        Urgency::person,
        [access = std::move(access), anchor, conversation = request->conversation](Desk& desk) {
            return desk.signIn(access, anchor, conversation);
        },
        errorOf(IdentityFault::invalid), [request](const Result& result) { request->complete(result); });
}

/// The answer comes at once, whatever is still waited for.
void OpenIDProvider::cancelRequest()
{
    const auto underWay = request_.lock();
    if (!underWay || !underWay->conversation->cancel()) return;
    desk_->setup().loop->post(
        lifetime_.guard([underWay] { underWay->complete(errorOf(IdentityFault::canceled)); }));
}

void OpenIDProvider::credentialState(const std::string& user,
                                     std::function<void(CredentialState state)> answered)
{
    ask<CredentialState>(
        Urgency::check, [access = inUse_, user](Desk& desk) { return desk.state(access, user); },
        CredentialState::unknown, std::move(answered));
}

void OpenIDProvider::forget(const std::string& user)
{
    desk_->kept.forget(user);
    const bool isRunning = desk_->storeThread().run(Urgency::check, [desk = desk_, access = inUse_, user] {
        desk->tried<bool>(
            [&](Desk& its) {
                its.removeForgotten(access, user);
                return true;
            },
            false);
    });
    if (!isRunning)
        desk_->setup().log->error(category,
                                  "The system has no thread to give: what the secret store keeps of the user "
                                  "who has signed out stays there.");
}

} // namespace velmora
