// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "systemd/SystemdServiceManager.h"

#include <chrono>
#include <stdexcept>
#include <string>

namespace velmora {

using namespace std::chrono_literals;

namespace {

constexpr auto category = "SystemdServiceManager";
constexpr auto patience = 1s;

/// Processes `bus`, which no loop does, until `answer` is there. Unlike sd_bus_call this bounds the time of
/// the connection's handshake, too.
void await(sd_bus* bus, const std::shared_ptr<sd_bus_message>& answer)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!answer) {
        if (dbus::check(sd_bus_process(bus, nullptr), "the system bus") > 0) continue;
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left <= 0us) throw std::runtime_error("it does not answer");
        dbus::check(sd_bus_wait(bus, static_cast<std::uint64_t>(left.count())), "the system bus");
    }
}

/// As `systemctl is-enabled` prints it. Throws std::exception where systemd gives no answer.
std::string unitFileState(const char* unit)
{
    dbus::Bus bus;
    dbus::check(sd_bus_open_system(out(bus)), "cannot reach the system bus");
    const auto question = systemd::newCall(bus.get(), "GetUnitFileState");
    dbus::check(sd_bus_message_append(question.get(), "s", unit), "GetUnitFileState");

    std::shared_ptr<sd_bus_message> answer;
    const auto keep = [](sd_bus_message* reply, void* into, sd_bus_error*) {
        *static_cast<std::shared_ptr<sd_bus_message>*>(into) = dbus::keep(reply);
        return 0;
    };
    const auto asked = dbus::ask(bus.get(), question, keep, &answer);
    await(bus.get(), answer);

    if (const auto* error = sd_bus_message_get_error(answer.get()))
        throw std::runtime_error(dbus::textOf(*error));
    const char* state = nullptr;
    dbus::check(sd_bus_message_read(answer.get(), "s", &state), "GetUnitFileState");
    return state;
}

} // namespace

ServiceManager::Status SystemdServiceManager::status()
try {
    return unitFileState(unit) == "enabled" ? Status::enabled : Status::notRegistered;
} catch (const std::exception& failure) {
    log_.warning(category, std::string("Cannot ask systemd for ") + unit + ": " + failure.what() + ".");
    return Status::notRegistered;
}

void SystemdServiceManager::registerService(Completion completion)
{
    const auto place = registrations_.emplace(registrations_.end());
    *place = std::make_unique<SystemdRegistration>(
        loop_, unit, [this, place, completion = std::move(completion)](const std::optional<Error>& error) {
            registrations_.erase(place);
            if (error)
                log_.warning(category, std::string("Cannot install ") + unit + ": " + error->description);
            completion(error);
        });
}

} // namespace velmora
