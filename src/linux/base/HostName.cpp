// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/HostName.h"

#include "base/Text.h"
#include "base/Utf8.h"
#include "base/WholeFile.h"

#include <array>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace velmora {

namespace {

constexpr std::size_t longestName = 64; // bytes, as of the kernel's

std::string fit(std::string_view name)
{
    return std::string(utf8Prefix(trimmed(printable(cleanUtf8(name))), longestName));
}

/// A value as a shell would take it: in quotes or not, with a backslash before what is to stand for itself.
std::string unquoted(std::string_view value)
{
    const char quote = value.empty() ? '\0' : value.front();
    const bool isQuoted = quote == '"' || quote == '\'';
    if (isQuoted) value.remove_prefix(1);
    std::string text;
    for (std::size_t i = 0; i < value.size() && !(isQuoted && value[i] == quote); ++i) {
        if (value[i] == '\\' && quote != '\'' && i + 1 < value.size()) ++i;
        text += value[i];
    }
    return text;
}

} // namespace

std::string prettyHostName(const std::string& machineInfo)
{
    constexpr std::string_view key = "PRETTY_HOSTNAME=";
    std::string_view rest = machineInfo;
    std::string found;
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        const auto line = trimmed(rest.substr(0, end));
        if (line.starts_with(key)) found = fit(unquoted(std::string_view(line).substr(key.size())));
        if (end == rest.npos) break;
        rest.remove_prefix(end + 1);
    }
    return found;
}

std::string hostName()
{
    const char* named = std::getenv("VELMORA_MACHINE_INFO");
    const auto machineInfo = readWholeFile(named && *named ? named : "/etc/machine-info");
    if (auto pretty = prettyHostName(machineInfo.value_or("")); !pretty.empty()) return pretty;
    std::array<char, longestName + 1> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? fit(name.data()) : "";
}

} // namespace velmora
