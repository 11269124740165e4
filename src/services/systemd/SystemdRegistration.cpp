// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "systemd/SystemdRegistration.h"

#include "base/Translation.h"

#include <array>
#include <string_view>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

using ErrorCode = ServiceManager::ErrorCode;

constexpr std::uint64_t forEver = UINT64_MAX; ///< a prompt stays open until the user answers it

constexpr std::array<std::pair<std::string_view, ErrorCode>, 8> knownErrors{{
    {"org.freedesktop.DBus.Error.AccessDenied", ErrorCode::authorizationDenied},
    {"org.freedesktop.DBus.Error.InteractiveAuthorizationRequired", ErrorCode::authorizationDenied},
    {"org.freedesktop.PolicyKit1.Error.Cancelled", ErrorCode::authorizationDenied},
    {"org.freedesktop.PolicyKit1.Error.NotAuthorized", ErrorCode::authorizationDenied},
    {"org.freedesktop.DBus.Error.FileNotFound", ErrorCode::invalidSignature},
    {"org.freedesktop.systemd1.NoSuchUnit", ErrorCode::invalidSignature},
    {"org.freedesktop.systemd1.BadUnitSetting", ErrorCode::invalidSignature},
    {"org.freedesktop.systemd1.LoadFailed", ErrorCode::invalidSignature},
}};

ErrorCode codeOf(std::string_view name)
{
    for (const auto& [known, code] : knownErrors) {
        if (name == known) return code;
    }
    return ErrorCode::internalFailure;
}

} // namespace

dbus::Message systemd::newCall(sd_bus* bus, const char* member)
{
    return dbus::newCall(bus, serviceName, objectPath, managerInterface, member);
}

SystemdRegistration::SystemdRegistration(EventLoop& loop, std::string unit, ServiceManager::Completion done)
    : loop_(loop), unit_(std::move(unit)), done_(std::move(done))
{
    try {
        enable();
    } catch (const std::system_error& failure) {
        fail(ErrorCode::internalFailure, failure.what());
    }
}

void SystemdRegistration::enable()
{
    bus_ = dbus::openSystemBus(loop_);
    disconnection_ = dbus::onDisconnected(
        bus_.get(), dbus::serve<SystemdRegistration, &SystemdRegistration::disconnected>, this);
    manager_.emplace(
        bus_.get(), systemd::serviceName, [] {},
        [this] { fail(ErrorCode::internalFailure, tr("systemd is not running.")); });
    jobs_ = dbus::match(bus_.get(),
                        {.sender = systemd::serviceName,
                         .path = systemd::objectPath,
                         .interface = systemd::managerInterface,
                         .member = "JobRemoved"},
                        dbus::serve<SystemdRegistration, &SystemdRegistration::jobRemoved>, this);
    // Without a subscription systemd need not send JobRemoved.
    const auto subscription = systemd::newCall(bus_.get(), "Subscribe");
    dbus::check(sd_bus_message_set_expect_reply(subscription.get(), false), "Subscribe");
    dbus::check(sd_bus_send(bus_.get(), subscription.get(), nullptr), "Subscribe");
    call<&SystemdRegistration::enabled>("EnableUnitFiles", "asbb", 1, unit_.c_str(), false, false);
}

void SystemdRegistration::enabled(sd_bus_message* reply)
{
    int carriesInstallInfo = 0;
    dbus::check(sd_bus_message_read(reply, "b", &carriesInstallInfo), "EnableUnitFiles");
    dbus::check(sd_bus_message_enter_container(reply, 'a', "(sss)"), "EnableUnitFiles");
    wasEnabled_ = dbus::check(sd_bus_message_at_end(reply, false), "EnableUnitFiles") > 0;
    if (carriesInstallInfo == 0) {
        return fail(ErrorCode::internalFailure, tr("Unit %1 cannot be enabled.", unit_));
    }
    call<&SystemdRegistration::reloaded>("Reload", "");
}

void SystemdRegistration::reloaded(sd_bus_message*)
{
    call<&SystemdRegistration::started>("StartUnit", "ss", unit_.c_str(), "replace");
}

void SystemdRegistration::started(sd_bus_message* reply)
{
    const char* job = nullptr;
    dbus::check(sd_bus_message_read(reply, "o", &job), "StartUnit");
    job_ = job;
}

int SystemdRegistration::jobRemoved(sd_bus_message* signal)
{
    const char *job = nullptr, *result = nullptr;
    if (job_.empty() || !manager_->sent(signal)) return 0;
    if (sd_bus_message_read(signal, "uoss", nullptr, &job, nullptr, &result) < 0 || job_ != job) return 0;
    if (result != std::string_view("done")) {
        fail(ErrorCode::internalFailure, tr("The job for %1 ended as \"%2\".", unit_, result));
    } else if (wasEnabled_) {
        fail(ErrorCode::alreadyRegistered, tr("It is enabled already."));
    } else {
        finish(std::nullopt);
    }
    return 0;
}

int SystemdRegistration::disconnected(sd_bus_message*)
{
    fail(ErrorCode::internalFailure, tr("The system bus closed the connection."));
    return 0;
}

template <SystemdRegistration::Step Next, typename... Arguments>
void SystemdRegistration::call(const char* member, const char* types, Arguments... arguments)
{
    const auto message = systemd::newCall(bus_.get(), member);
    dbus::check(sd_bus_message_set_allow_interactive_authorization(message.get(), true), member);
    dbus::check(sd_bus_message_append(message.get(), types, arguments...), member);
    call_ = dbus::ask(bus_.get(), message,
                      dbus::serve<SystemdRegistration, &SystemdRegistration::answered<Next>>, this, forEver);
}

template <SystemdRegistration::Step Next>
int SystemdRegistration::answered(sd_bus_message* reply)
try {
    if (const auto* error = sd_bus_message_get_error(reply)) {
        fail(codeOf(error->name), dbus::textOf(*error));
    } else if (!isOver_) {
        (this->*Next)(reply);
    }
    return 0;
} catch (const std::system_error& failure) {
    fail(ErrorCode::internalFailure, failure.what());
    return 0;
}

void SystemdRegistration::fail(ErrorCode code, std::string description)
{
    finish(ServiceManager::Error{code, std::move(description)});
}

void SystemdRegistration::finish(std::optional<ServiceManager::Error> error)
{
    if (std::exchange(isOver_, true)) return;
    loop_.post(lifetime_.guard([this, error = std::move(error)] {
        const auto handler = std::move(done_); // which may destroy this
        handler(error);
    }));
}

} // namespace velmora
