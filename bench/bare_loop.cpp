// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// The floor that the daemons stand on: a device monitor, twelve attributes read at each event, one signal.
// Nothing is checked, decided or remembered.

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <systemd/sd-bus.h>
#include <systemd/sd-device.h>
#include <unistd.h>

namespace {

constexpr auto path = "/app/velmora/BareLoop";
constexpr auto interface = "app.velmora.BareLoop";

void need(int result)
{
    if (result < 0) std::exit(1);
}

std::string read(const std::string& attribute)
{
    std::array<char, 4096> bytes; // NOLINT: filled by read
    const int fd = open(("/sys/class/power_supply/BAT0/" + attribute).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return {};
    const ssize_t size = ::read(fd, bytes.data(), bytes.size());
    close(fd);
    return {bytes.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

double level()
{
    for (const auto* attribute :
         {"type", "present", "status", "energy_now", "energy_full", "energy_full_design", "voltage_now",
          "voltage_min_design", "power_now", "cycle_count", "technology"}) {
        read(attribute);
    }
    return std::atof(read("capacity").c_str());
}

int onDevice(sd_device_monitor*, sd_device*, void* bus)
{
    return sd_bus_emit_signal(static_cast<sd_bus*>(bus), path, interface, "changed", "d", level());
}

int onCall(sd_bus_message* call, void*, sd_bus_error*)
{
    return sd_bus_message_is_method_call(call, interface, "level") > 0
               ? sd_bus_reply_method_return(call, "d", level())
               : 0;
}

} // namespace

int main()
{
    sd_event* loop = nullptr;
    sd_bus* bus = nullptr;
    sd_device_monitor* monitor = nullptr;
    need(sd_event_default(&loop));
    need(sd_bus_open_system(&bus));
    need(sd_bus_attach_event(bus, loop, 0));
    need(sd_bus_add_object(bus, nullptr, path, onCall, nullptr));
    need(sd_device_monitor_new(&monitor));
    need(sd_device_monitor_filter_add_match_subsystem_devtype(monitor, "power_supply", nullptr));
    need(sd_device_monitor_attach_event(monitor, loop));
    need(sd_device_monitor_start(monitor, onDevice, bus));
    need(sd_bus_request_name_async(bus, nullptr, interface, 0, nullptr, nullptr));
    return sd_event_loop(loop) < 0;
}
