// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "output/FleetView.h"

#include "base/Moment.h"
#include "base/Translation.h"
#include "fleet/FleetArchive.h"
#include "output/Lines.h"
#include "texts/FleetTexts.h"
#include "texts/PanelTexts.h"
#include "wire/ModelFace.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace velmora::ctl {

namespace {

namespace face = wire::face::fleet;

bool isOwn(const FleetSnapshot& now, const DeviceReport& device)
{
    return device.state.deviceID == now.deviceID;
}

Json dateJson(const std::optional<Date>& date)
{
    return date ? Json(utcTime(*date)) : Json();
}

} // namespace

std::string fleetText(const FleetSnapshot& now)
{
    Lines lines;
    lines.add(tr("Ecosystem Sync"), now.isOn ? tr("on") : tr("off"));
    lines.add(tr("This machine"), now.deviceName);
    lines.add(now.deviceName.empty() ? tr("This machine") : "", now.deviceID);
    if (!now.isOn) return lines.text();
    lines.add(tr("Records"), fleet::placeText(now.place));
    lines.add("", fleet::problemText(now.fault, now.place));
    lines.add(tr("Last saved"), now.lastSyncDate ? localTime(*now.lastSyncDate) : tr("not yet"));
    lines.add(tr("Machines"), std::to_string(now.devices.size()));
    lines.add(tr("Commands"), now.acceptsCommands ? tr("taken from the others") : tr("none are taken"));
    return lines.text();
}

Json fleetJson(const FleetSnapshot& now)
{
    return {{face::isOn, now.isOn},
            {face::deviceID, now.deviceID},
            {face::deviceName, now.deviceName},
            {face::place, jsonOf(archived(now.place))},
            {face::fault, faultText(now.fault)},
            {face::lastSyncDate, dateJson(now.lastSyncDate)},
            {"machines", now.devices.size()},
            {face::acceptsCommands, now.acceptsCommands}};
}

std::string devicesText(const FleetSnapshot& now, Date time)
{
    if (now.devices.empty()) return tr("No machine has said anything yet.") + '\n';
    Lines lines;
    for (const auto& device : now.devices) {
        const auto name = fleet::nameOf(device);
        lines.add(isOwn(now, device) ? tr("%1 (this machine)", name) : name,
                  panel::percentageText(std::clamp(device.state.percentage, 0.0, 100.0)) + "  " +
                      fleet::statusText(device, time));
        lines.add("", fleet::inForceText(device));
        if (!isOwn(now, device)) lines.add("", fleet::commandText(device, time));
        lines.add("", device.state.deviceID.value_or(""));
    }
    const auto end = fleet::listEndText(now.devices.size());
    return lines.text() + (end.empty() ? "" : end + '\n');
}

Json devicesJson(const FleetSnapshot& now)
{
    auto list = Json::array();
    for (const auto& device : now.devices) {
        auto record = jsonOf(archived(device));
        record[device_record::lastUpdate] = dateJson(device.lastUpdate);
        record[device_record::commandTimestamp] = dateJson(device.state.commandTimestamp);
        record[device_record::commandTaken] =
            dateJson(device.inForce ? device.inForce->commandTaken : std::nullopt);
        record["isThisMachine"] = isOwn(now, device);
        list.push_back(std::move(record));
    }
    return list;
}

} // namespace velmora::ctl
