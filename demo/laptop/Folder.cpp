// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Folder.h"

#include <charconv>

namespace velmora {

Folder::Folder(const CapturedMachine& machine, std::string path) : machine_(&machine), path_(std::move(path))
{
}

std::string Folder::pathOf(std::string_view name) const
{
    return path_ + "/" + std::string(name);
}

bool Folder::has(std::string_view name) const
{
    return machine_->values.contains(pathOf(name)) || machine_->errors.contains(pathOf(name));
}

std::string Folder::text(std::string_view name) const
{
    const auto found = machine_->values.find(pathOf(name));
    return found == machine_->values.end() ? std::string() : found->second;
}

double Folder::number(std::string_view name, double fallback) const
{
    const auto digits = text(name);
    long long value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool isWhole = error == std::errc{} && end == digits.data() + digits.size();
    return isWhole ? static_cast<double>(value) : fallback;
}

} // namespace velmora
