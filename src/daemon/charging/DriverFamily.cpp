// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/DriverFamily.h"

#include <algorithm>
#include <array>

namespace velmora {

namespace {

constexpr std::array eightyOrFull{80, 100};

// From drivers/platform/x86 and drivers/power/supply of Linux 6.12 and later; what the values do on other
// input is why they are fitted before they are written.
constexpr std::array families{
    // EINVAL unless start <= 99, end >= 1 and start <= end.
    DriverFamily{.name = "thinkpad_acpi", .module = "thinkpad_acpi"},
    // Clamps silently: start 50 to 95, end 55 to 100, and moves the partner to keep a distance of 5.
    DriverFamily{.name = "dell-laptop",
                 .module = "dell_laptop",
                 .lowestStart = 50,
                 .highestStart = 95,
                 .lowestEnd = 55,
                 .gap = 5},
    // End only. Stores anything from 0 to 100 and shows it, whatever the firmware makes of it.
    DriverFamily{.name = "asus-wmi", .module = "asus_wmi", .echoes = true},
    DriverFamily{.name = "huawei-wmi", .module = "huawei_wmi"},
    // EINVAL for anything but these.
    DriverFamily{.name = "lg-laptop", .module = "lg_laptop", .lowestEnd = 80, .ends = eightyOrFull},
    // Rounds to these.
    DriverFamily{.name = "toshiba_acpi", .module = "toshiba_acpi", .lowestEnd = 80, .ends = eightyOrFull},
    DriverFamily{.name = "system76_acpi", .module = "system76_acpi"},
    // One register: start is always end - 10, and writing it moves the end.
    DriverFamily{.name = "msi-ec", .module = "msi_ec", .lowestEnd = 10, .gap = 10, .startFollows = true},
    // End only. EINVAL below 50.
    DriverFamily{.name = "fujitsu-laptop", .module = "fujitsu_laptop", .lowestEnd = 50},
    DriverFamily{.name = "samsung-galaxybook", .module = "samsung_galaxybook"},
    DriverFamily{.name = "cros_charge-control", .module = "cros_charge_control"},
    // A start above the end moves the end up.
    DriverFamily{.name = "qcom_battmgr",
                 .module = "qcom_battmgr",
                 .lowestStart = 50,
                 .highestStart = 95,
                 .lowestEnd = 55,
                 .gap = 5},
    // Writes of the start succeed and are ignored: it reads end - 5.
    DriverFamily{.name = "macsmc-power",
                 .module = "",
                 .supply = "macsmc-battery",
                 .lowestEnd = 10,
                 .gap = 5,
                 .startFollows = true},
    // `conservation_mode`, or from Linux 6.17 on Long_Life of `charge_types`. Which of its levels a model
    // holds
    // cannot be asked.
    DriverFamily{.name = "ideapad-laptop",
                 .module = "ideapad_laptop",
                 .fixed = fixedLimit("55-60 or 80"),
                 .isShared = true},
    // Long_Life by whatever driver.
    DriverFamily{.name = "charge_types", .module = "", .fixed = fixedLimit("unknown")},
    DriverFamily{.name = "generic", .module = ""},
};

} // namespace

Thresholds DriverFamily::fitted(Thresholds wanted) const
{
    if (fixed) return heldBy(*fixed, wanted.end < 100);
    Thresholds result = wanted;
    result.end = std::clamp(wanted.end, lowestEnd, 100);
    if (!ends.empty()) {
        const auto above = std::ranges::upper_bound(ends, result.end);
        result.end = above == ends.begin() ? ends.front() : *std::prev(above);
    }
    if (startFollows) {
        if (wanted.start) result.start = result.end - gap;
    } else if (wanted.start) {
        const int highest = std::min(highestStart, result.end - gap);
        result.start = std::clamp(*wanted.start, std::min(lowestStart, highest), highest);
    }
    return result;
}

const DriverFamily& driverFamily(const std::filesystem::path& root, std::string_view supply,
                                 ChargeControl control, std::string_view module)
{
    const auto offers = [control](const DriverFamily& family) {
        return control == ChargeControl::none ||
               (control == ChargeControl::fixedLimit) == (family.fixed != nullptr);
    };
    const auto matches = [&](const DriverFamily& family) {
        if (!offers(family)) return false;
        if (!family.supply.empty()) return family.supply == supply;
        std::error_code ignored;
        if (family.module.empty()) return false;
        return family.module == module ||
               std::filesystem::is_directory(root / "module" / family.module, ignored);
    };
    const auto found = std::ranges::find_if(families, matches);
    if (found != families.end()) return *found;
    return *std::ranges::find_if(families.rbegin(), families.rend(), offers);
}

Thresholds heldBy(const FixedLimit& limit, bool isOn)
{
    if (!isOn) return {std::nullopt, 100};
    return {limit.start < 0 ? std::nullopt : std::optional(limit.start), limit.end};
}

std::span<const DriverFamily> driverFamilies()
{
    return families;
}

} // namespace velmora
