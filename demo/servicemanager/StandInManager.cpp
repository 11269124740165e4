// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "StandInManager.h"

#include "systemd/SystemdRegistration.h"

#include <string_view>

namespace velmora {

namespace {

constexpr auto jobPath = "/org/freedesktop/systemd1/job/42";
constexpr auto unit = "app.velmora.daemon.service";

constexpr auto accessDenied = "org.freedesktop.DBus.Error.AccessDenied";
constexpr auto interactionRequired = "org.freedesktop.DBus.Error.InteractiveAuthorizationRequired";

template <int (StandInManager::*Method)(sd_bus_message*)>
constexpr sd_bus_message_handler_t served = dbus::serve<StandInManager, Method>;

constexpr auto anyone = SD_BUS_VTABLE_UNPRIVILEGED;

} // namespace

const sd_bus_vtable StandInManager::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Subscribe", "", "", served<&StandInManager::subscribe>, anyone),
    SD_BUS_METHOD("GetUnitFileState", "s", "s", served<&StandInManager::getUnitFileState>, anyone),
    SD_BUS_METHOD("EnableUnitFiles", "asbb", "ba(sss)", served<&StandInManager::authorise>, anyone),
    SD_BUS_METHOD("Reload", "", "", served<&StandInManager::authorise>, anyone),
    SD_BUS_METHOD("StartUnit", "ss", "o", served<&StandInManager::authorise>, anyone),
    SD_BUS_SIGNAL("JobRemoved", "uoss", 0),
    SD_BUS_VTABLE_END,
};

StandInManager::StandInManager(EventLoop& loop, sd_bus* bus, Options options)
    : loop_(loop), bus_(bus), options_(options)
{
    dbus::check(sd_bus_add_object_vtable(bus, out(object_), systemd::objectPath, systemd::managerInterface,
                                         vtable_, this),
                systemd::managerInterface);
    dbus::check(sd_bus_request_name(bus, systemd::serviceName, 0), systemd::serviceName);
}

int StandInManager::subscribe(sd_bus_message* call)
{
    isSubscribed_ = true;
    return sd_bus_reply_method_return(call, nullptr);
}

int StandInManager::getUnitFileState(sd_bus_message* call)
{
    if (options_.course == Course::missing)
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FILE_NOT_FOUND, "No such file or directory");
    const char* state = options_.course == Course::masked           ? "masked"
                        : options_.course == Course::withoutInstall ? "static"
                        : options_.isEnabled                        ? "enabled"
                                                                    : "disabled";
    return sd_bus_reply_method_return(call, "s", state);
}

int StandInManager::authorise(sd_bus_message* call)
{
    if (isAuthorised_) return act(call);
    if (options_.course == Course::refused)
        return sd_bus_reply_method_errorf(call, accessDenied, "Permission denied");
    if (options_.course == Course::noAgent || sd_bus_message_get_allow_interactive_authorization(call) <= 0)
        return sd_bus_reply_method_errorf(call, interactionRequired, "Interactive authentication required.");
    ++prompts_;
    waiting_ = dbus::keep(call);
    if (options_.thinking) user_ = loop_.after(*options_.thinking, [this] { decide(); });
    return 1;
}

void StandInManager::decide()
{
    const auto call = std::exchange(waiting_, nullptr);
    if (!call) return;
    if (options_.course == Course::cancelled) {
        sd_bus_reply_method_errorf(call.get(), accessDenied, "Permission denied");
        return;
    }
    // Leave to manage unit files is kept for a while and implies the rest, but not the other way round.
    isAuthorised_ = sd_bus_message_get_member(call.get()) == std::string_view("EnableUnitFiles");
    act(call.get());
}

int StandInManager::act(sd_bus_message* call)
{
    const std::string_view member = sd_bus_message_get_member(call);
    if (member == "EnableUnitFiles") return enable(call);
    if (member == "StartUnit") return start(call);
    return sd_bus_reply_method_return(call, nullptr);
}

int StandInManager::enable(sd_bus_message* call)
{
    switch (options_.course) {
    case Course::missing:
        return sd_bus_reply_method_errorf(call, "org.freedesktop.systemd1.NoSuchUnit",
                                          "Unit file %s does not exist.", unit);
    case Course::masked:
        return sd_bus_reply_method_errorf(call, "org.freedesktop.systemd1.UnitMasked",
                                          "Unit file %s is masked.", unit);
    case Course::withoutInstall:
        return sd_bus_reply_method_return(call, "ba(sss)", false, 0);
    default:
        if (std::exchange(options_.isEnabled, true))
            return sd_bus_reply_method_return(call, "ba(sss)", true, 0);
        return sd_bus_reply_method_return(
            call, "ba(sss)", true, 1, "symlink",
            "/etc/systemd/system/multi-user.target.wants/app.velmora.daemon.service",
            "/usr/lib/systemd/system/app.velmora.daemon.service");
    }
}

int StandInManager::start(sd_bus_message* call)
{
    if (options_.course == Course::damaged)
        return sd_bus_reply_method_errorf(call, "org.freedesktop.systemd1.BadUnitSetting",
                                          "Unit %s has a bad unit file setting.", unit);
    sd_bus_reply_method_return(call, "o", jobPath);
    job_ = loop_.after(std::chrono::milliseconds{0}, [this] {
        if (options_.course == Course::failing) return finishJob("failed");
        if (!onStart) return finishJob("done");
        onStart();
    });
    return 1;
}

void StandInManager::finishJob(const char* result)
{
    if (!isSubscribed_) return;
    sd_bus_emit_signal(bus_, systemd::objectPath, systemd::managerInterface, "JobRemoved", "uoss", 42U,
                       jobPath, unit, result);
}

} // namespace velmora
