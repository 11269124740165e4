// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/KernelVersion.h"

#include <charconv>
#include <optional>
#include <sys/utsname.h>

namespace velmora {

namespace {

/// Digits alone, taken off the front of `text`.
std::optional<int> takeNumber(std::string_view& text)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || text.front() == '-') return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

} // namespace

SystemVersion kernelVersion()
{
    utsname names{};
    return uname(&names) == 0 ? versionOfRelease(names.release) : SystemVersion{};
}

SystemVersion versionOfRelease(std::string_view release)
{
    const auto major = takeNumber(release);
    if (!major || !release.starts_with('.')) return {};
    release.remove_prefix(1);
    const auto minor = takeNumber(release);
    return minor ? SystemVersion{*major, *minor} : SystemVersion{};
}

} // namespace velmora
