// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/DeviceAttributes.h"

#include "base/Text.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

constexpr int maximumOpen = 32; // more than any device's that is read here

/// Whether the attribute may come while its device is there, with a vendor's driver.
bool comesLate(std::string_view name)
{
    return name.starts_with("charge_control_") || name.starts_with("charge_start_") ||
           name.starts_with("charge_stop_") || name == "charge_behaviour" || name == "charge_types";
}

/// Whether its driver brings the attribute with the device, or never: no event need look for it.
bool comesWithDevice(std::string_view name)
{
    return name == "temp";
}

} // namespace

DeviceAttributes::DeviceAttributes(const std::filesystem::path& root, std::filesystem::path folder,
                                   Complaints& complaints, Memory memory)
    : folder_(std::move(folder)),
      complaints_(complaints),
      directory_(::open((root / folder_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
      error_(directory_ ? 0 : errno),
      remembers_(directory_ && (memory == Memory::always || isOnSysfs(directory_.get())))
{
}

DeviceAttributes::Known& DeviceAttributes::known(std::string_view name)
{
    const auto found = attributes_.find(name);
    return found != attributes_.end() ? found->second : attributes_[std::string(name)];
}

SysfsText DeviceAttributes::read(std::string_view name)
{
    if (!directory_) return {.error = error_, .text = {}};
    if (!remembers_) return open(name, nullptr);
    auto& attribute = known(name);
    if (attribute.isAbsent) return {.error = ENOENT, .text = {}};
    if (attribute.file) {
        auto again = readAttribute(attribute.file.get());
        if (again.error != ENODEV) return again;
        close(attribute); // its driver was unloaded; it may be back by now, or at any later look
        attribute.comesBack = true;
    }
    auto text = open(name, &attribute);
    attribute.isAbsent = text.isAbsent() && !attribute.comesBack && !comesLate(name);
    return text;
}

SysfsText DeviceAttributes::open(std::string_view name, Known* attribute)
{
    auto file = openAttribute(directory_.get(), std::string(name).c_str());
    if (!file) return {.error = errno, .text = {}};
    auto text = readAttribute(file.get());
    if (attribute && open_ < maximumOpen) {
        attribute->file = std::move(file);
        ++open_;
    }
    return text;
}

void DeviceAttributes::close(Known& attribute)
{
    attribute.file = FileDescriptor();
    --open_;
}

std::optional<std::string> DeviceAttributes::checked(std::string_view name, const SysfsText& read) const
{
    if (read.error == 0) return trimmed(read.text);
    if (!read.isAbsent())
        complain(name, "cannot be read: " + std::generic_category().message(read.error) + "; leaving it out");
    return std::nullopt;
}

std::optional<std::int64_t> DeviceAttributes::parsed(std::string_view name,
                                                     const std::optional<std::string>& value) const
{
    if (!value) return std::nullopt;
    const auto number = parseInteger(*value);
    if (!number)
        complain(name, "is '" + value->substr(0, 40) + "', which is no whole number; leaving it out");
    return number;
}

std::optional<std::string> DeviceAttributes::text(std::string_view name)
{
    return checked(name, read(name));
}

std::optional<std::int64_t> DeviceAttributes::integer(std::string_view name)
{
    return parsed(name, text(name));
}

std::optional<std::string> DeviceAttributes::fixedText(std::string_view name)
{
    if (!remembers_) return text(name);
    auto& attribute = known(name);
    if (attribute.isFixed) return attribute.fixed;
    const auto first = read(name);
    attribute.fixed = checked(name, first);
    attribute.isFixed = attribute.fixed || first.isAbsent();
    if (attribute.file) close(attribute);
    return attribute.fixed;
}

void DeviceAttributes::complain(std::string_view name, const std::string& what) const
{
    const auto attribute = path(name).string();
    complaints_.get().raise(attribute, attribute + ' ' + what + '.');
}

void DeviceAttributes::forget()
{
    for (auto& [name, attribute] : attributes_)
        attribute.isAbsent = attribute.isAbsent && comesWithDevice(name);
}

} // namespace velmora
