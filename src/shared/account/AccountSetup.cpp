// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "account/AccountSetup.h"

#include "account/KeychainHelper.h"
#include "base/Wipe.h"

#include <algorithm>
#include <array>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "AccountSetup";

namespace key = preference_key;

constexpr std::size_t longestText = 500;

/// Printable ASCII, no blanks.
bool isPlain(std::string_view text)
{
    return text.size() <= longestText &&
           std::ranges::all_of(text, [](char c) { return c > ' ' && c <= '~'; });
}

/// Of a URL's "host[:port][/path]"; empty where it is not that.
std::string_view hostOf(std::string_view rest)
{
    const auto authority = rest.substr(0, rest.find('/'));
    const auto hostEnd = authority.starts_with('[') ? authority.find(']') + 1 : authority.find(':');
    const auto host = authority.substr(0, hostEnd);
    const auto port = authority.substr(host.size());
    constexpr std::size_t longestPort = 6; // with its colon
    const bool isPort =
        port.empty() || (port.starts_with(':') && port.size() > 1 && port.size() <= longestPort &&
                         port.find_first_not_of("0123456789", 1) == port.npos);
    return isPort && host.find('%') == host.npos ? host : std::string_view();
}

bool isIssuer(std::string_view text)
{
    constexpr std::string_view secure = "https://", open = "http://";
    constexpr std::array<std::string_view, 3> here{"localhost", "127.0.0.1", "[::1]"};
    if (!isPlain(text) || text.find_first_of("?#@\\\"<>") != text.npos) return false;
    if (text.starts_with(secure)) return !hostOf(text.substr(secure.size())).empty();
    return text.starts_with(open) && std::ranges::find(here, hostOf(text.substr(open.size()))) != here.end();
}

bool isParameter(std::string_view text)
{
    constexpr std::array<std::string_view, 11> own{
        "client_id",     "client_secret", "code_challenge", "code_challenge_method", "nonce", "redirect_uri",
        "response_mode", "response_type", "request",        "request_uri",           "state"};
    const auto end = text.find('=');
    return end != text.npos && end > 0 && text.find('%') >= end &&
           std::ranges::find(own, text.substr(0, end)) == own.end();
}

bool areParameters(std::string_view text)
{
    if (!isPlain(text) || text.find_first_of("#\\\"<>") != text.npos) return false;
    while (!text.empty()) {
        const auto end = std::min(text.find('&'), text.size());
        if (!isParameter(text.substr(0, end))) return false;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return true;
}

} // namespace

AccountSetup::AccountSetup()
    : loop_(Platform::current().mainLoop),
      log_(Platform::current().log),
      preferences_(Platform::current().preferences),
      provider_(Platform::current().identityProvider),
      secrets_(Platform::current().secretStore),
      source(kept()),
      hasClientSecret(preferences_->boolean(key::hasIdentitySecret))
{
    provider_->use(source.get(), keptSecret());
    secrets_->whenReady(lifetime_.guard([this] {
        isReady_ = true;
        if (!source.get().issuer.empty()) madeManager();
    }));
}

AccountSetup::~AccountSetup()
{
    if (queue_) secrets_->cancel(); // or its answer would be waited for
}

AppleAuthManager& AccountSetup::madeManager()
{
    if (!manager_) {
        manager_ = &AppleAuthManager::shared();
        if (onManager) onManager();
    }
    return *manager_;
}

AccountSetup::Flaw AccountSetup::flawOf(const IdentitySource& wanted)
{
    if (wanted == IdentitySource{}) return Flaw::none;
    if (!isIssuer(wanted.issuer)) return Flaw::issuer;
    if (wanted.clientID.empty() || !isPlain(wanted.clientID)) return Flaw::client;
    return areParameters(wanted.parameters) ? Flaw::none : Flaw::parameters;
}

std::string AccountSetup::clientSecretAccount(const IdentitySource& of)
{
    return of.clientID + "@" + of.issuer;
}

bool AccountSetup::use(const IdentitySource& wanted, const std::optional<std::string>& clientSecret)
{
    if (isKeepingSecret.get() || flawOf(wanted) != Flaw::none) return false;
    const bool isSameClient = clientSecretAccount(wanted) == clientSecretAccount(source.get());
    if (!clientSecret || wanted.issuer.empty()) {
        adopt(wanted, isSameClient && hasClientSecret.get());
        return true;
    }
    isSecretRefused.set(false); // that was of an earlier one
    queue_ = Platform::current().makeWorkQueue("velmora-account");
    isKeepingSecret.set(true);
    const auto done = lifetime_.guard([this, wanted](bool isKept) {
        queue_.reset(); // and its thread
        isSecretRefused.set(!isKept);
        isKeepingSecret.set(false);
        if (isKept) return adopt(wanted, true);
        log_->warning(category, "The secret store did not take the client's secret for " + wanted.issuer +
                                    ", being locked, absent or slow: the provider stays as it was.");
    });
    queue_->async(
        [loop = loop_, done, account = clientSecretAccount(wanted), secret = guarded(*clientSecret)] {
            const bool isKept = KeychainHelper::shared().save(*secret, clientSecretService, account);
            loop->post([done, isKept] { done(isKept); });
        });
    return true;
}

void AccountSetup::adopt(const IdentitySource& wanted, bool hasSecret)
{
    const bool isElsewhere = clientSecretAccount(wanted) != clientSecretAccount(source.get());
    if (isElsewhere && !source.get().issuer.empty()) madeManager().signOut();
    source.set(wanted);
    hasClientSecret.set(hasSecret);
    isSecretRefused.set(false);
    preferences_->setText(key::identityIssuer, wanted.issuer);
    preferences_->setText(key::identityClient, wanted.clientID);
    preferences_->setText(key::identityParameters, wanted.parameters);
    preferences_->set(key::hasIdentitySecret, hasSecret);
    provider_->use(wanted, keptSecret());
    if (isReady_ && !wanted.issuer.empty()) madeManager();
}

IdentityProvider::ClientSecret AccountSetup::keptSecret() const
{
    if (!hasClientSecret.get()) return [] { return std::string(); };
    return [secrets = secrets_, account = clientSecretAccount(source.get())] {
        SecretItem item{.service = clientSecretService, .account = account};
        const auto status = secrets->copyMatching(item);
        return status == SecretStatus::success ? item.data.value_or("") : std::string();
    };
}

IdentitySource AccountSetup::kept() const
{
    IdentitySource found{.issuer = preferences_->text(key::identityIssuer),
                         .clientID = preferences_->text(key::identityClient),
                         .parameters = preferences_->text(key::identityParameters)};
    if (flawOf(found) == Flaw::none) return found;
    log_->warning(category, "The identity provider in the preferences (" + found.issuer +
                                ") has no issuer, client or parameters that would do: none is used.");
    return {};
}

} // namespace velmora
