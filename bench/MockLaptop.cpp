// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "MockLaptop.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

namespace velmora {

namespace {

constexpr int limit = 80; ///< percent

using Pairs = std::vector<std::pair<const char*, const char*>>;

std::string addSupply(UMockdevTestbed* testbed, const char* name, const Pairs& attributes)
{
    std::vector<gchar*> list;
    for (const auto& [attribute, value] : attributes) {
        list.push_back(const_cast<gchar*>(attribute));
        list.push_back(const_cast<gchar*>(value));
    }
    list.push_back(nullptr);
    gchar* none[] = {nullptr};
    gchar* path = umockdev_testbed_add_devicev(testbed, "power_supply", name, nullptr, list.data(), none);
    std::string device = path;
    g_free(path);
    return device;
}

} // namespace

MockLaptop::MockLaptop(int level)
    : battery_(addSupply(testbed_.get(), "BAT0",
                         {{"type", "Battery\n"},
                          {"present", "1\n"},
                          {"technology", "Li-ion\n"},
                          {"manufacturer", "Velmora\n"},
                          {"model_name", "Bench\n"},
                          {"cycle_count", "120\n"},
                          {"energy_full_design", "57000000\n"},
                          {"energy_full", "50000000\n"},
                          {"voltage_min_design", "11400000\n"},
                          {"voltage_now", "11900000\n"},
                          {"power_now", "9500000\n"},
                          {"status", "Discharging\n"},
                          {"charge_control_start_threshold", "78\n"},
                          {"charge_control_end_threshold", "80\n"}})),
      mains_(addSupply(testbed_.get(), "AC", {{"type", "Mains\n"}, {"online", "0\n"}}))
{
    drainTo(level);
}

std::string MockLaptop::root() const
{
    gchar* folder = umockdev_testbed_get_root_dir(testbed_.get());
    std::string root = folder;
    g_free(folder);
    return root;
}

void MockLaptop::drainTo(int level)
{
    set(battery_, "capacity", std::to_string(level));
    set(battery_, "energy_now", std::to_string(level * 500'000));
}

void MockLaptop::drawPower(int milliwatts)
{
    set(battery_, "power_now", std::to_string(milliwatts) + "000");
}

void MockLaptop::holdOnMains()
{
    drainTo(limit);
    set(battery_, "power_now", "0");
    set(battery_, "status", "Not charging");
    set(mains_, "online", "1");
    announce(mains_);
    announce(battery_);
}

void MockLaptop::announce(const std::string& device)
{
    umockdev_testbed_uevent(testbed_.get(), device.c_str(), "change");
}

/// As the kernel does: whoever holds the attribute open reads the new value from it. umockdev's own function
/// would put another file in its place.
void MockLaptop::set(const std::string& device, const char* attribute, const std::string& value)
{
    const auto file = root() + device + '/' + attribute;
    std::ofstream out(file, std::ios::in | std::ios::out);
    if (!out)
        return umockdev_testbed_set_attribute(testbed_.get(), device.c_str(), attribute,
                                              (value + "\n").c_str());
    out << value << '\n';
    const auto size = static_cast<std::uintmax_t>(out.tellp());
    out.close();
    std::filesystem::resize_file(file, size);
}

} // namespace velmora
