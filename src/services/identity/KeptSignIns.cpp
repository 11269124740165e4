// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/KeptSignIns.h"

#include "base/WipeStack.h"

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

[[gnu::noinline]] std::string dumped(const json& object)
{
    return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string encoded(const KeptSignIn& signIn)
{
    const Wiped object{json{{issuerKey, signIn.source.issuer},
                            {clientKey, signIn.source.clientID},
                            {tokenKey, signIn.refreshToken}}};
    auto text = dumped(object.value);
    wipeStack(); // the library puts texts together there
    return text;
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

// -- What is kept

SecretStatus KeptSignIns::read(const std::string& user, std::optional<KeptSignIn>& signIn)
{
    auto item = itemOf(user);
    const auto status = store_->copyMatching(item);
    if (status == SecretStatus::success && item.data) signIn = decoded(*item.data);
    return status;
}

KeptSignIns::Found KeptSignIns::find(const std::string& user)
{
    const MutexLock turn(turn_);
    {
        const MutexLock lock(mutex_);
        if (const auto known = users_.find(user); known != users_.end() && known->second.isForgotten)
            return SecretStatus::notFound;
    }
    if (auto signIn = refused(user)) return *signIn;
    std::optional<KeptSignIn> signIn;
    const auto status = read(user, signIn);
    if (signIn) return *signIn;
    if (status == SecretStatus::success)
        log_->warning(category, std::string("What the secret store keeps under ") + service +
                                    " cannot be read: nobody can be asked whether the sign-in still holds.");
    return status;
}

bool KeptSignIns::store(const std::string& user, const KeptSignIn& signIn)
{
    auto item = itemOf(user);
    item.data = encoded(signIn);
    item.accessibility = SecretItem::Accessibility::whenUnlockedThisDeviceOnly;
    return store_->add(item) == SecretStatus::success;
}

bool KeptSignIns::keep(const std::string& user, const KeptSignIn& signIn, Forgets known)
{
    const MutexLock turn(turn_);
    {
        const MutexLock lock(mutex_);
        if (users_[user].forgets != known) return false;
        users_[user].isForgotten = false;
        refused_.erase(user);
    }
    if (!store(user, signIn)) remember(user, signIn, known);
    return true;
}

void KeptSignIns::putOff(const std::string& user, const KeptSignIn& signIn, Forgets known)
{
    const MutexLock turn(turn_);
    remember(user, signIn, known);
}

// -- What the store did not take

void KeptSignIns::remember(const std::string& user, const KeptSignIn& signIn, Forgets known)
{
    {
        const MutexLock lock(mutex_);
        if (users_[user].forgets != known) return;
        users_[user].isForgotten = false;
        refused_.insert_or_assign(user, signIn);
    }
    log_->warning(category, "The secret store did not take the sign-in with " + signIn.source.issuer +
                                ", being locked, absent or slow. It is asked again a few times; if it never "
                                "takes it, the next start of this program ends the sign-in.");
    if (onRefusal) onRefusal();
}

std::optional<KeptSignIn> KeptSignIns::refused(const std::string& user)
{
    const MutexLock lock(mutex_);
    const auto found = refused_.find(user);
    return found == refused_.end() ? std::nullopt : std::optional(found->second);
}

bool KeptSignIns::hasAllTaken()
{
    const MutexLock lock(mutex_);
    return refused_.empty();
}

bool KeptSignIns::offerAgain()
{
    const MutexLock turn(turn_);
    mutex_.lock();
    const auto offered = refused_;
    mutex_.unlock();
    for (const auto& [user, signIn] : offered) {
        if (!store(user, signIn)) return false;
        log_->info(category, "The secret store has now taken the sign-in with " + signIn.source.issuer + ".");
        const MutexLock lock(mutex_);
        refused_.erase(user);
    }
    return true;
}

// -- What is forgotten

KeptSignIns::Forgets KeptSignIns::forgets(const std::string& user)
{
    const MutexLock lock(mutex_);
    return users_[user].forgets;
}

void KeptSignIns::forget(const std::string& user)
{
    const MutexLock lock(mutex_);
    auto& known = users_[user];
    ++known.forgets;
    known.isForgotten = true;
}

std::optional<KeptSignIn> KeptSignIns::removeForgotten(const std::string& user)
{
    const MutexLock turn(turn_);
    {
        const MutexLock lock(mutex_);
        if (!users_[user].isForgotten) return std::nullopt;
    }
    auto signIn = refused(user);
    const bool isOnlyHere = signIn.has_value();
    std::optional<KeptSignIn> stored;
    auto status = read(user, stored);
    if (status != SecretStatus::unavailable) status = store_->remove(itemOf(user));
    const MutexLock lock(mutex_);
    refused_.erase(user);
    users_[user].isForgotten = status == SecretStatus::unavailable;
    if (status == SecretStatus::unavailable && !isOnlyHere)
        log_->warning(category, std::string("The secret store, being locked, absent or slow, did not remove "
                                            "what it keeps under ") +
                                    service + " for the user who has signed out: it stays there.");
    return isOnlyHere ? signIn : stored;
}

} // namespace velmora
