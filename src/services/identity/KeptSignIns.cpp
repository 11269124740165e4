// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/KeptSignIns.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace velmora {

namespace {

using json = nlohmann::ordered_json; // as for the history: what it is made of is in the program once

constexpr auto category = "OpenIDProvider";
constexpr auto issuerKey = "issuer";
constexpr auto clientKey = "client_id";
constexpr auto tokenKey = "refresh_token";

SecretItem itemOf(const std::string& user)
{
    return {.service = KeptSignIns::service, .account = user};
}

/// The texts of a JSON value are out of memory when it goes.
struct Wiped {
    json value;

    ~Wiped()
    {
        if (value.is_object() && value.contains(tokenKey) && value[tokenKey].is_string())
            wipe(value[tokenKey].get_ref<std::string&>());
    }
};

std::string encoded(const KeptSignIn& signIn)
{
    const Wiped object{json{{issuerKey, signIn.source.issuer},
                            {clientKey, signIn.source.clientID},
                            {tokenKey, signIn.refreshToken}}};
    return object.value.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::optional<KeptSignIn> decoded(const std::string& text)
{
    Wiped object{json::parse(text, nullptr, /*allow_exceptions=*/false)};
    const auto take = [&](const char* key, std::string& into) {
        const auto found = object.value.is_object() ? object.value.find(key) : object.value.end();
        if (found == object.value.end() || !found->is_string()) return false;
        into = found->get_ref<const std::string&>();
        return true;
    };
    KeptSignIn signIn;
    if (!take(issuerKey, signIn.source.issuer) || !take(clientKey, signIn.source.clientID) ||
        !take(tokenKey, signIn.refreshToken))
        return std::nullopt;
    return signIn;
}

} // namespace

KeptSignIns::KeptSignIns(std::shared_ptr<SecretStore> store, std::shared_ptr<Log> log)
    : store_(std::move(store)), log_(std::move(log))
{
}

KeptSignIns::Found KeptSignIns::find(const std::string& user)
{
    if (const auto refused = refused_.find(user); refused != refused_.end()) {
        const KeptSignIn signIn = refused->second;
        keep(user, signIn);
        return signIn;
    }
    auto item = itemOf(user);
    const auto status = store_->copyMatching(item);
    if (status != SecretStatus::success) return status;
    if (auto signIn = item.data ? decoded(*item.data) : std::nullopt) return *signIn;
    log_->warning(category, std::string("What the secret store keeps under ") + service +
                                " cannot be read: nobody can be asked whether the sign-in still holds.");
    return SecretStatus::unavailable;
}

void KeptSignIns::keep(const std::string& user, const KeptSignIn& signIn)
{
    auto item = itemOf(user);
    item.data = encoded(signIn);
    item.accessibility = SecretItem::Accessibility::whenUnlockedThisDeviceOnly;
    if (store_->add(item) == SecretStatus::success) {
        refused_.erase(user);
        return;
    }
    refused_.insert_or_assign(user, signIn);
    log_->warning(category, "The secret store did not take the sign-in with " + signIn.source.issuer +
                                ", being locked, absent or slow: it is not confirmed in the next run.");
}

void KeptSignIns::remove(const std::string& user)
{
    const bool isOnlyHere = refused_.erase(user) > 0;
    if (store_->remove(itemOf(user)) != SecretStatus::unavailable || isOnlyHere) return;
    log_->warning(category, std::string("The secret store, being locked, absent or slow, did not remove what "
                                        "it keeps under ") +
                                service + " for the user who has signed out: it stays there.");
}

} // namespace velmora
