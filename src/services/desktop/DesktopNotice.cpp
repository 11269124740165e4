// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/DesktopNotice.h"

#include "base/Translation.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

constexpr std::uint64_t forEver = UINT64_MAX; ///< the number is wanted even of a server that is late
constexpr std::chrono::seconds slack{5};

void tell(std::vector<DesktopNotice::Completion>& those, const std::optional<std::string>& error)
{
    for (const auto& completed : std::exchange(those, {})) completed(error);
}

} // namespace

DesktopNotice::DesktopNotice(const Desk& desk, std::string identifier, std::function<void()> over)
    : desk_(desk), identifier_(std::move(identifier)), over_(std::move(over))
{
}

void DesktopNotice::show(NotificationRequest request, Completion completed)
{
    waiting_.push_back(std::move(completed));
    next_ = std::move(request);
    isTakenBack_ = false;
    if (!deadline_)
        deadline_ = desk_.loop.after(
            patience, [this] { giveUp(); }, slack);
    if (!isUnderWay()) begin();
}

/// Asks first what the server can do: the answer also says which one it is, so that the notice itself goes to
/// that one alone, where our numbers mean our notices.
void DesktopNotice::begin()
{
    try {
        const auto question =
            notifications::newCall(desk_.bus, notifications::serviceName, "GetCapabilities");
        dbus::check(sd_bus_message_set_auto_start(question.get(), true), "GetCapabilities");
        call_ = dbus::ask(desk_.bus, question, dbus::serve<DesktopNotice, &DesktopNotice::prepared>, this,
                          forEver);
    } catch (const std::system_error& failure) {
        failNext(failure.what());
    }
}

int DesktopNotice::prepared(sd_bus_message* reply)
{
    const char* server = sd_bus_message_get_sender(reply);
    if (const auto* error = sd_bus_message_get_error(reply)) {
        failNext(dbus::textOf(*error));
    } else if (next_ && server) {
        send(server, notifications::readCapabilities(reply));
    } else {
        finish(); // taken back meanwhile
    }
    return 0;
}

void DesktopNotice::send(const std::string& server, const notifications::Capabilities& capabilities)
{
    try {
        const auto replaced = server == server_ ? number_ : 0;
        const auto notify =
            notifications::newNotify(desk_.bus, server, desk_.sender, *next_, capabilities, replaced);
        call_ =
            dbus::ask(desk_.bus, notify, dbus::serve<DesktopNotice, &DesktopNotice::shown>, this, forEver);
    } catch (const std::system_error& failure) {
        return failNext(failure.what());
    }
    actions_ = std::move(next_->actions);
    next_.reset();
    sent_ = std::exchange(waiting_, {});
    hasResponse_ = false;
    token_.clear();
}

int DesktopNotice::shown(sd_bus_message* reply)
{
    std::uint32_t number = 0;
    if (const auto* error = sd_bus_message_get_error(reply)) {
        tell(sent_, dbus::textOf(*error));
    } else if (const char* server = sd_bus_message_get_sender(reply);
               sd_bus_message_read(reply, "u", &number) > 0 && server) {
        number_ = number;
        server_ = server;
        if (isTakenBack_) close();
    }
    tell(sent_, std::nullopt);
    finish();
    return 0;
}

void DesktopNotice::failNext(const std::string& error)
{
    next_.reset();
    tell(waiting_, error);
    finish();
}

void DesktopNotice::finish()
{
    call_.reset();
    isTakenBack_ = false;
    if (next_) return begin();
    tell(waiting_, std::nullopt); // whose notices were taken back
    deadline_.reset();
    if (number_ == 0) over();
}

void DesktopNotice::giveUp()
{
    const auto error = tr("The notification server does not answer.");
    deadline_.reset();
    takeBack();
    tell(sent_, error);
    tell(waiting_, error);
}

void DesktopNotice::takeBack()
{
    if (!isUnderWay()) return;
    isTakenBack_ = true;
    next_.reset();
}

void DesktopNotice::remove()
{
    // What is on its way may come under the same number: unless it is taken back, it replaces the old notice.
    if (isUnderWay() && !isTakenBack_) return;
    close();
    if (!isUnderWay()) over();
}

void DesktopNotice::close()
{
    const auto number = std::exchange(number_, 0);
    if (number == 0) return;
    try {
        const auto call = notifications::newCall(desk_.bus, server_, "CloseNotification");
        dbus::check(sd_bus_message_append(call.get(), "u", number), "CloseNotification");
        dbus::check(sd_bus_message_set_expect_reply(call.get(), false), "CloseNotification");
        dbus::send(call);
    } catch (const std::system_error&) {
        // Without a connection there is no notice either.
    }
}

void DesktopNotice::forget()
{
    number_ = 0;
    if (!isUnderWay()) over();
}

void DesktopNotice::over() const
{
    const auto handler = over_;
    handler();
}

std::optional<NotificationResponse> DesktopNotice::respond(std::string_view action)
{
    const bool isKnown =
        action == NotificationResponse::click ||
        std::ranges::any_of(actions_, [&](const auto& one) { return one.identifier == action; });
    if (!isKnown || std::exchange(hasResponse_, true)) return std::nullopt;
    return NotificationResponse{identifier_, std::string(action), std::exchange(token_, {})};
}

} // namespace velmora
