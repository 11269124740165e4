// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "report/FleetMachines.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "link/Failure.h"
#include "texts/FleetTexts.h"

#include <algorithm>
#include <vector>

namespace velmora::ctl {

namespace {

using Action = FleetRequest::Action;

char small(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool beginsWith(std::string_view text, std::string_view beginning)
{
    return text.size() >= beginning.size() &&
           std::ranges::equal(text.substr(0, beginning.size()), beginning, {}, small, small);
}

bool isSame(std::string_view text, std::string_view other)
{
    return text.size() == other.size() && beginsWith(text, other);
}

std::string idOf(const DeviceReport& device)
{
    return device.state.deviceID.value_or("");
}

const DeviceReport* find(const FleetSnapshot& now, const DeviceReport& device)
{
    const auto found =
        std::ranges::find_if(now.devices, [&](const auto& one) { return idOf(one) == idOf(device); });
    return found == now.devices.end() ? nullptr : &*found;
}

std::vector<const DeviceReport*> meantBy(const FleetSnapshot& now, std::string_view word)
{
    using Matches = bool (*)(const DeviceReport& device, std::string_view word);
    constexpr Matches ways[] = {
        [](const auto& device, auto meant) { return isSame(idOf(device), meant); },
        [](const auto& device, auto meant) { return isSame(device.state.deviceName.value_or(""), meant); },
        [](const auto& device, auto meant) { return beginsWith(idOf(device), meant); },
    };
    std::vector<const DeviceReport*> found;
    for (const auto way : ways) {
        for (const auto& device : now.devices) {
            if (!word.empty() && way(device, word)) found.push_back(&device);
        }
        if (!found.empty()) break;
    }
    return found;
}

} // namespace

DeviceReport otherMachine(const FleetSnapshot& now, std::string_view meant)
{
    const auto found = meantBy(now, meant);
    const auto word = printable(meant.substr(0, 80));
    if (found.empty())
        throw Failure(
            ExitStatus::failed,
            tr("No machine of the fleet is called \"%1\". These are: velmoractl fleet devices", word));
    if (found.size() > 1)
        throw Failure(ExitStatus::failed,
                      tr("Several machines are called \"%1\": say the identifier, which is "
                         "in velmoractl fleet devices.",
                         word));
    if (idOf(*found.front()) == now.deviceID)
        throw Failure(ExitStatus::failed,
                      tr("\"%1\" is this machine: it is commanded without the word fleet.", word));
    return *found.front();
}

FleetCommand commandFor(const DeviceReport& device, const FleetRequest& request, Date now)
{
    const auto obstacle = fleet::obstacleText(device);
    if (!obstacle.empty()) throw Failure(ExitStatus::unable, obstacle);
    auto command = fleet::suggested(device, now);
    if (request.action == Action::limit) command.limit = request.limit;
    if (request.action == Action::limit || request.action == Action::autoProtect)
        command.isAutoProtectOn = request.isOn;
    if (request.action == Action::storage) command.isStorageModeOn = request.isOn;
    return command;
}

bool isListed(const FleetSnapshot& now, const DeviceReport& device)
{
    return find(now, device) != nullptr;
}

bool isCommanded(const FleetSnapshot& now, const DeviceReport& before, const FleetCommand& command)
{
    const auto* device = find(now, before);
    return device && device->state.commandTimestamp > before.state.commandTimestamp &&
           device->state.remoteChargeLimit == command.limit &&
           device->state.remoteAppleMode == command.isAutoProtectOn &&
           device->state.isStorageModeEnabled == command.isStorageModeOn;
}

} // namespace velmora::ctl
