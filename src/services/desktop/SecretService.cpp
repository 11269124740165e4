// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/SecretService.h"

#include "desktop/SecretSession.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <sys/eventfd.h>
#include <system_error>
#include <utility>

namespace velmora {

SecretService::SecretService(MainLoop& loop, sd_bus* session)
    : loop_(loop), bus_(sd_bus_ref(session)), cancelled_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    dbus::check(cancelled_ ? 0 : -errno, "eventfd");
}

namespace {

/// A store that is locked may keep what it does not show. One without a default collection keeps nothing: it
/// answers the question with an error of its own.
SecretStatus absence(SecretSession& session)
try {
    return session.isLocked() ? SecretStatus::unavailable : SecretStatus::notFound;
} catch (const std::system_error& error) {
    const auto& why = error.code();
    const bool isUnanswered = why == std::errc::timed_out || why == std::errc::operation_canceled ||
                              why == std::errc::not_connected || why == std::errc::connection_reset;
    return isUnanswered ? SecretStatus::unavailable : SecretStatus::notFound;
}

} // namespace

template <typename Use>
SecretStatus SecretService::with(Use use) const
try {
    const bool isMain = std::this_thread::get_id() == mainThread_;
    SecretSession session(SecretSession::Clock::now() + (isMain ? patienceOnMainThread : patience),
                          cancelled_.get());
    return use(session);
} catch (const std::system_error&) {
    return SecretStatus::unavailable;
}

SecretStatus SecretService::add(const SecretItem& item)
{
    return with([&](SecretSession& session) {
        const std::string_view secret = item.data ? *item.data : std::string_view(); // no copy to be wiped
        const bool isStored = session.store(item.service, item.account, secret);
        return isStored ? SecretStatus::success : SecretStatus::unavailable;
    });
}

SecretStatus SecretService::copyMatching(SecretItem& item)
{
    return with([&](SecretSession& session) {
        const auto found = session.find(item.service, item.account);
        if (found.empty()) return absence(session);
        item.data = session.secretOf(found.front());
        return SecretStatus::success;
    });
}

SecretStatus SecretService::remove(const SecretItem& item)
{
    return with([&](SecretSession& session) {
        const auto found = session.find(item.service, item.account);
        if (found.empty()) return absence(session);
        const auto isGone = [&](const auto& one) { return session.remove(one); };
        return std::ranges::count_if(found, isGone) > 0 ? SecretStatus::success : SecretStatus::unavailable;
    });
}

void SecretService::cancel()
{
    eventfd_write(cancelled_.get(), 1);
}

// -- At log-in

void SecretService::whenReady(std::function<void()> ready)
{
    if (isReady_) return loop_.post(std::move(ready));
    waiting_.push_back(std::move(ready));
    if (waiting_.size() > 1) return;
    deadline_ = loop_.after(bus_ ? patienceAtStart : patienceAtStart.zero(), [this] { becomeReady(); });
    if (!bus_) return;
    try {
        owner_.emplace(bus_.get(), SecretSession::serviceName, [this] { look(); });
        look();
    } catch (const std::system_error&) {
        deadline_ = loop_.after(patienceAtStart.zero(), [this] { becomeReady(); }); // the bus is gone
    }
}

void SecretService::look()
{
    const auto call = dbus::newCall(bus_.get(), SecretSession::serviceName, SecretSession::servicePath,
                                    SecretSession::serviceInterface, "ReadAlias");
    dbus::check(sd_bus_message_set_auto_start(call.get(), true), "ReadAlias");
    dbus::check(sd_bus_message_append(call.get(), "s", "default"), "ReadAlias");
    question_ = dbus::ask(bus_.get(), call, dbus::serve<SecretService, &SecretService::answered>, this);
}

/// Where there is no service the bus answers. One that refuses is there all the same, locked perhaps.
int SecretService::answered(sd_bus_message* reply)
{
    if (owner_ && owner_->sent(reply)) becomeReady();
    return 0;
}

void SecretService::becomeReady()
{
    isReady_ = true;
    deadline_.reset();
    for (auto& ready : std::exchange(waiting_, {})) loop_.post(std::move(ready));
    loop_.post(lifetime_.guard([this] { // not while one of them is being called
        owner_.reset();
        question_.reset();
    }));
}

} // namespace velmora
