// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "wire/ChargeEvent.h"

#include <algorithm>

namespace velmora {

KeyedArchive ChargeEvent::archived() const
{
    KeyedArchive archive;
    archive.encode("kind", std::string(chargeEventKinds.at(static_cast<std::size_t>(kind))));
    if (kind == Kind::powerSourceChanged) archive.encode("powerSource", powerSource);
    if (kind == Kind::levelLost) archive.encode("level", level);
    if (kind == Kind::cycleCompleted) archive.encode("cycleCount", cycleCount);
    return archive;
}

std::optional<ChargeEvent> ChargeEvent::unarchived(const KeyedArchive& archive)
{
    const auto* const found = std::ranges::find(chargeEventKinds, archive.decodeText("kind", ""));
    if (found == chargeEventKinds.end()) return std::nullopt;
    ChargeEvent event{static_cast<Kind>(found - chargeEventKinds.begin())};
    event.powerSource = archive.decodeText("powerSource", "");
    event.level = archive.decodeInteger("level", -1);
    event.cycleCount = archive.decodeInteger("cycleCount", -1);
    const bool isWhole = (event.kind != Kind::powerSourceChanged || !event.powerSource.empty()) &&
                         (event.kind != Kind::levelLost || (event.level >= 0 && event.level <= 100)) &&
                         (event.kind != Kind::cycleCompleted || event.cycleCount > 0);
    if (!isWhole) return std::nullopt;
    return event;
}

} // namespace velmora
