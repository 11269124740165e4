// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/OpenIDSession.h"

#include "base/Text.h"
#include "base/Utf8.h"
#include "base/Wipe.h"

#include <cerrno>
#include <chrono>
#include <exception>
#include <optional>
#include <sys/eventfd.h>
#include <system_error>
#include <utility>

namespace velmora::openid {

namespace {

using namespace std::chrono;

[[noreturn]] void fail(IdentityFault fault, std::string detail)
{
    throw ProviderFailure({fault, std::move(detail)});
}

FileDescriptor event()
{
    FileDescriptor made(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!made) throw std::system_error(errno, std::generic_category(), "eventfd");
    return made;
}

RedirectListener listening()
{
    try {
        return {};
    } catch (const std::system_error& error) {
        fail(IdentityFault::noListener,
             std::string("The browser has nowhere to come back to: ") + error.what() + ".");
    }
}

/// What a redirect says, for the log.
std::string shown(const std::string& text)
{
    constexpr std::size_t longest = 200;
    const auto clean = printable(cleanUtf8(text.substr(0, 4 * longest)));
    return trimmed(utf8Prefix(clean, longest));
}

/// Of the user's "no", and of the provider's.
[[noreturn]] void failFor(const Redirect& redirect)
{
    const auto detail =
        shown(redirect.error) + (redirect.errorText.empty() ? "" : " (" + shown(redirect.errorText) + ")");
    if (redirect.error == "access_denied")
        fail(IdentityFault::canceled, "The user did not agree: " + detail + ".");
    fail(faultOfError(redirect.error), "The provider refuses the sign-in: " + detail + ".");
}

} // namespace

OpenIDSession::OpenIDSession(IdentityAccess access, std::function<Date()> now, SessionPatience patience)
    : pages_(access.pages),
      patience_(patience),
      interruption_(event()),
      provider_(std::move(access), std::move(now))
{
}

/// What `work` gives, or the problem that ended it.
template <typename Work>
auto OpenIDSession::attempt(const Work& work) -> std::variant<decltype(work()), IdentityProblem>
{
    IdentityProblem problem;
    try {
        return work();
    } catch (const ProviderFailure& failure) {
        problem = failure.problem;
    } catch (const std::exception& failure) {
        problem.detail =
            std::string("The sign-in ends for want of the system's means: ") + failure.what() + ".";
    }
    // Whatever else has come of it.
    if (provider_.isCanceled()) problem.fault = IdentityFault::canceled;
    return problem;
}

void OpenIDSession::allow(milliseconds patience)
{
    provider_.end = steady_clock::now() + patience;
}

std::variant<OpenIDClient::SignedIn, IdentityProblem> OpenIDSession::signIn(const OpenBrowser& openBrowser)
{
    return attempt([this, &openBrowser] {
        allow(patience_.before);
        provider_.discovery(); // or the browser would be shown to somebody who cannot sign in
        auto listener = listening();
        try {
            auto result = signedIn(listener, openBrowser);
            listener.answer({ResultPage::Kind::signedIn, pages_.signedIn});
            return result;
        } catch (const ProviderFailure& failure) {
            const bool isCanceled =
                provider_.isCanceled() || failure.problem.fault == IdentityFault::canceled;
            listener.answer({ResultPage::Kind::notSignedIn, isCanceled ? pages_.canceled : pages_.failed});
            throw;
        }
    });
}

OpenIDClient::SignedIn OpenIDSession::signedIn(RedirectListener& listener, const OpenBrowser& openBrowser)
{
    auto marks = SignInMarks::make();
    const Wiped wiped(marks.verifier);
    if (provider_.isCanceled())
        fail(IdentityFault::canceled, {}); // what is announced may be known from before
    if (!openBrowser(authorizationPage(provider_.discovery(), provider_.source(), marks, listener.address())))
        fail(IdentityFault::noBrowser, "No browser could be opened.");
    auto code = brought(listener, marks);
    const Wiped alsoWiped(code);
    allow(patience_.after);
    auto tokens = provider_.exchangeCode(code, marks.verifier, listener.address());
    auto user = userOf(tokens, marks);
    return {.credential = {.user = std::move(user.subject),
                           .givenName = std::move(user.givenName),
                           .familyName = std::move(user.familyName),
                           .email = std::move(user.email)},
            .refreshToken = tokens.refreshToken};
}

/// The code that the browser brings.
std::string OpenIDSession::brought(RedirectListener& listener, const SignInMarks& marks)
{
    auto redirect = listener.wait(marks.state, steady_clock::now() + patience_.browser, interruption_.get());
    if (redirect) return codeFrom(*redirect);
    const auto strays = listener.strays();
    fail(IdentityFault::expired,
         "Nobody came back from the browser in time" + (strays.empty() ? "." : " (" + strays + ")."));
}

std::string OpenIDSession::codeFrom(Redirect& redirect)
{
    const auto& discovery = provider_.discovery();
    // A code of another provider, brought to this one, would be told to the wrong party.
    const bool isOther = redirect.issuer ? *redirect.issuer != discovery.issuer
                                         : discovery.sendsIssuer && redirect.error.empty();
    if (isOther)
        fail(IdentityFault::invalid, "The browser came back from another provider than it was sent to.");
    if (!redirect.error.empty()) failFor(redirect);
    if (redirect.code.empty()) fail(IdentityFault::invalid, "The browser came back without a code.");
    return std::move(redirect.code);
}

/// Whom the identity token names, with what their page says of them. Tokens of nobody go back: the provider
/// would list them among what the user has allowed.
UserInfo OpenIDSession::userOf(const Tokens& tokens, const SignInMarks& marks)
try {
    auto user = provider_.identityIn(tokens, marks.nonce);
    const auto page = provider_.userinfo(tokens);
    if (!page) return user;
    if (page->subject != user.subject)
        fail(IdentityFault::invalid, "The provider's page on the user is another one's.");
    if (page->givenName) user.givenName = page->givenName;
    if (page->familyName) user.familyName = page->familyName;
    if (page->email) user.email = page->email;
    return user;
} catch (const ProviderFailure&) {
    revoke(tokens.refreshToken);
    throw;
}

std::optional<IdentityProblem> OpenIDSession::reach()
{
    const auto reached = attempt([this] {
        allow(patience_.before);
        provider_.discovery();
        return true;
    });
    const auto* problem = std::get_if<IdentityProblem>(&reached);
    return problem ? std::optional(*problem) : std::nullopt;
}

std::variant<std::string, IdentityProblem> OpenIDSession::refresh(const std::string& refreshToken,
                                                                  const Keep& keep)
{
    return attempt([this, &refreshToken, &keep] {
        allow(patience_.refresh);
        const auto tokens = provider_.renew(refreshToken, keep);
        if (!tokens.identityToken.empty()) return provider_.identityIn(tokens, std::nullopt).subject;
        if (const auto page = provider_.userinfo(tokens)) return page->subject;
        fail(IdentityFault::invalid, "The provider renews the sign-in, but does not say whose it is.");
    });
}

void OpenIDSession::revoke(const std::string& refreshToken)
{
    // What fails here is not told: the token is forgotten on this side in any case.
    if (refreshToken.empty()) return;
    static_cast<void>(attempt([this, &refreshToken] {
        allow(patience_.revocation);
        provider_.revoke(refreshToken);
        return true;
    }));
}

void OpenIDSession::cancel()
{
    provider_.cancel();
    eventfd_write(interruption_.get(), 1);
}

} // namespace velmora::openid
