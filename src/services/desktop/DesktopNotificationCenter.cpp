// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/DesktopNotificationCenter.h"

#include "base/Translation.h"

#include <algorithm>
#include <numeric>
#include <system_error>
#include <utility>

namespace velmora {

DesktopNotificationCenter::DesktopNotificationCenter(MainLoop& loop, sd_bus* session,
                                                     notifications::Sender sender)
    : loop_(loop), bus_(sd_bus_ref(session)), desk_{loop, session, std::move(sender)}
{
    if (!bus_) return;
    try {
        listen();
    } catch (const std::system_error&) {
        bus_.reset(); // the connection is gone, and the session with it
    }
}

void DesktopNotificationCenter::listen()
{
    owner_.emplace(
        bus_.get(), notifications::serviceName, [this] { serverChanged(); }, [this] { serverChanged(); });
    facts_.emplace(bus_.get(), *owner_, [this] { serverChanges_.emit(); });
}

/// Only while there are notices of ours: some servers tell everybody of every program's.
void DesktopNotificationCenter::follow()
{
    using Self = DesktopNotificationCenter;
    const auto match = [this](const char* member, sd_bus_message_handler_t handler) {
        signals_.push_back(dbus::match(bus_.get(),
                                       {.sender = notifications::serviceName,
                                        .path = notifications::objectPath,
                                        .interface = notifications::serviceName,
                                        .member = member},
                                       handler, this));
    };
    match("ActionInvoked", dbus::serve<Self, &Self::invoked>);
    match("NotificationClosed", dbus::serve<Self, &Self::closed>);
    match("ActivationToken", dbus::serve<Self, &Self::tokenGiven>);
}

void DesktopNotificationCenter::requestAuthorization(Authorization answered)
{
    loop_.post(lifetime_.guard([this, answered = std::move(answered)] {
        // Without a session there never is anybody to ask, and nobody is told "no" who may ask again.
        if (bus_) facts_->whenThere(answered);
    }));
}

void DesktopNotificationCenter::add(NotificationRequest request, Completion completed)
{
    loop_.post(lifetime_.guard([this, request = std::move(request), completed = std::move(completed)] {
        show(request, completed);
    }));
}

void DesktopNotificationCenter::show(NotificationRequest request, Completion completed)
{
    if (!bus_) return completed(tr("There is no session bus."));
    const auto waiting =
        std::accumulate(notices_.begin(), notices_.end(), std::size_t{0},
                        [](std::size_t sum, const DesktopNotice& one) { return sum + one.waiting(); });
    if (waiting >= maximumWaiting) return completed(tr("Too many notices wait for the notification server."));
    try {
        noticeOf(request.identifier).show(std::move(request), completed);
    } catch (const std::system_error& failure) {
        completed(failure.what());
    }
}

DesktopNotice& DesktopNotificationCenter::noticeOf(const std::string& identifier)
{
    if (auto* known = find(identifier)) return *known;
    forgetOldest();
    if (signals_.empty()) follow();
    const auto place = notices_.emplace(notices_.end(), desk_, identifier, [this, identifier] {
        notices_.remove_if([&](const auto& one) { return one.identifier() == identifier; });
        if (notices_.empty()) signals_.clear();
    });
    return *place;
}

DesktopNotice* DesktopNotificationCenter::find(const std::string& identifier)
{
    const auto found = std::ranges::find(notices_, identifier, &DesktopNotice::identifier);
    return found == notices_.end() ? nullptr : &*found;
}

void DesktopNotificationCenter::forgetOldest()
{
    if (notices_.size() < maximumFollowed) return;
    const auto oldest = std::ranges::find(notices_, false, &DesktopNotice::isUnderWay);
    if (oldest != notices_.end()) notices_.erase(oldest);
}

void DesktopNotificationCenter::removePending(std::vector<std::string> identifiers)
{
    loop_.post(lifetime_.guard([this, identifiers = std::move(identifiers)] {
        for (const auto& one : identifiers) {
            if (auto* notice = find(one)) notice->takeBack();
        }
    }));
}

void DesktopNotificationCenter::removeDelivered(std::vector<std::string> identifiers)
{
    loop_.post(lifetime_.guard([this, identifiers = std::move(identifiers)] {
        for (const auto& one : identifiers) {
            if (auto* notice = find(one)) notice->remove();
        }
    }));
}

/// Numbers of a server mean nothing to the next one.
void DesktopNotificationCenter::serverChanged()
{
    for (auto next = notices_.begin(); next != notices_.end();) (next++)->forget();
    if (!facts_) return;
    if (owner_->exists())
        facts_->appeared();
    else
        facts_->gone();
}

DesktopNotice* DesktopNotificationCenter::meantBy(sd_bus_message* signal, const char*& text,
                                                  const char* types)
{
    std::uint32_t number = 0;
    if (!owner_->sent(signal) || sd_bus_message_read(signal, types, &number, &text) <= 0) return nullptr;
    const auto found = std::ranges::find_if(
        notices_, [&](const auto& one) { return one.stands(sd_bus_message_get_sender(signal), number); });
    return found == notices_.end() ? nullptr : &*found;
}

int DesktopNotificationCenter::invoked(sd_bus_message* signal)
{
    const char* action = nullptr;
    auto* notice = meantBy(signal, action, "us");
    if (!notice) return 0;
    if (const auto response = notice->respond(action)) responses_.emit(*response);
    return 0;
}

int DesktopNotificationCenter::tokenGiven(sd_bus_message* signal)
{
    constexpr std::size_t maximumTokenBytes = 256;
    const char* token = nullptr;
    if (auto* notice = meantBy(signal, token, "us"))
        notice->keepToken(notifications::shownText(token, maximumTokenBytes));
    return 0;
}

int DesktopNotificationCenter::closed(sd_bus_message* signal)
{
    const char* none = nullptr;
    if (auto* notice = meantBy(signal, none, "u")) notice->forget();
    return 0;
}

} // namespace velmora
