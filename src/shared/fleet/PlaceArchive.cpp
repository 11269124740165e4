// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "fleet/PlaceArchive.h"

#include "wire/ModelFace.h"

#include <algorithm>
#include <limits>

namespace velmora {

namespace {

namespace key = wire::face::fleet::place_key;

template <typename Enum, std::size_t Count>
Enum enumOf(const std::array<const char*, Count>& texts, std::string_view text, Enum otherwise)
{
    const auto* found = std::ranges::find(texts, text);
    return found == texts.end() ? otherwise : static_cast<Enum>(found - texts.begin());
}

std::uint16_t portOf(std::int64_t number)
{
    const bool isPort = number > 0 && number <= std::numeric_limits<std::uint16_t>::max();
    return isPort ? static_cast<std::uint16_t>(number) : std::uint16_t{0};
}

} // namespace

KeyedArchive archived(const RecordPlace& place)
{
    KeyedArchive archive;
    archive.encode(key::kind, std::string(recordPlaceKindTexts.at(static_cast<std::size_t>(place.kind))));
    archive.encode(key::host, place.host);
    archive.encode(key::port, std::int64_t{place.port});
    archive.encode(key::database, place.database);
    archive.encode(key::user, place.user);
    archive.encode(key::trust, std::string(recordTrustTexts.at(static_cast<std::size_t>(place.trust))));
    archive.encode(key::passwordFile, place.passwordFile);
    return archive;
}

RecordPlace unarchivedPlace(const KeyedArchive& archive)
{
    const RecordPlace usual;
    return {.kind = enumOf(recordPlaceKindTexts, archive.decodeText(key::kind, ""), usual.kind),
            .host = archive.decodeText(key::host, usual.host),
            .port = portOf(archive.decodeInteger(key::port, usual.port)),
            .database = archive.decodeText(key::database, usual.database),
            .user = archive.decodeText(key::user, usual.user),
            .trust = enumOf(recordTrustTexts, archive.decodeText(key::trust, ""), usual.trust),
            .passwordFile = archive.decodeText(key::passwordFile, usual.passwordFile)};
}

} // namespace velmora
