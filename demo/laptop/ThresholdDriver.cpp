// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ThresholdDriver.h"

#include <algorithm>
#include <cerrno>
#include <charconv>

namespace velmora {

namespace {

bool within(int value, int lowest, int highest)
{
    return lowest <= value && value <= highest;
}

/// thinkpad_acpi: each is compared with the other as it stands now; equal is fine.
int setThinkpad(ChargeThresholds& held, Threshold which, int value)
{
    if (which == Threshold::start) {
        if (!within(value, 0, 99) || value > held.end) return EINVAL;
        held.start = value;
    } else {
        if (!within(value, 1, 100) || value < held.start) return EINVAL;
        held.end = value;
    }
    return 0;
}

/// asus-wmi: an end alone, 0 included.
int setAsus(ChargeThresholds& held, Threshold which, int value)
{
    if (which == Threshold::start) return ENOENT;
    if (!within(value, 0, 100)) return EINVAL;
    held.end = value;
    return 0;
}

/// dell-laptop: clamps without a word, and keeps five points between the two by moving the one that is
/// written.
int setDell(ChargeThresholds& held, Threshold which, int value)
{
    constexpr int gap = 5;
    if (!within(value, 0, 100)) return EINVAL;
    if (which == Threshold::start) {
        held.start = std::min(std::clamp(value, 50, 95), held.end - gap);
    } else {
        held.end = std::max(std::clamp(value, 55, 100), held.start + gap);
    }
    return 0;
}

/// huawei-wmi: no comparison of the two.
int setHuawei(ChargeThresholds& held, Threshold which, int value)
{
    if (!within(value, 0, 100)) return EINVAL;
    (which == Threshold::start ? held.start : held.end) = value;
    return 0;
}

/// lg-laptop: a switch in the clothes of a number.
int setLg(ChargeThresholds& held, Threshold which, int value)
{
    if (which == Threshold::start) return ENOENT;
    if (value != 80 && value != 100) return EINVAL;
    held.end = value;
    return 0;
}

/// msi-ec: one register; the start is always ten below the end, so that writing either moves both.
int setMsi(ChargeThresholds& held, Threshold which, int value)
{
    constexpr int gap = 10;
    if (!within(value, 0, 100)) return EINVAL;
    const int end = which == Threshold::start ? value + gap : value;
    if (!within(end, gap, 100)) return EINVAL;
    held = {.start = end - gap, .end = end};
    return 0;
}

/// ideapad-laptop: it has no thresholds, but a switch.
int setIdeapad(ChargeThresholds&, Threshold, int)
{
    return ENOENT;
}

constexpr ThresholdDriver drivers[] = {
    {"thinkpad", setThinkpad, "thinkpad_acpi"},
    {"asus", setAsus, "asus_wmi"},
    {"dell", setDell, "dell_laptop"},
    {"huawei", setHuawei, "huawei_wmi"},
    {"lg", setLg, "lg_laptop"},
    {"msi", setMsi, "msi_ec"},
    {"ideapad", setIdeapad, "ideapad_laptop"},
};

/// As the kernel's `kstrtoint(text, 10, &value)`: one sign, digits, one newline. 0 or an errno.
int parse(std::string_view text, int& value)
{
    if (text.ends_with('\n')) text.remove_suffix(1);
    if (text.starts_with('+') && text.size() > 1 && text[1] != '-') text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (end != text.data() + text.size() || error == std::errc::invalid_argument) return EINVAL;
    return error == std::errc{} ? 0 : ERANGE;
}

} // namespace

int ThresholdDriver::store(ChargeThresholds& held, Threshold which, std::string_view text) const
{
    int value = 0;
    if (const int error = parse(text, value)) return error;
    return set(held, which, value);
}

std::span<const ThresholdDriver> ThresholdDriver::all()
{
    return drivers;
}

const ThresholdDriver* ThresholdDriver::named(std::string_view name)
{
    const auto found = std::ranges::find(drivers, name, &ThresholdDriver::name);
    return found == std::end(drivers) ? nullptr : &*found;
}

} // namespace velmora
