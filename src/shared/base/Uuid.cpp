// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Uuid.h"

#include <array>
#include <cstdint>
#include <random>
#include <string_view>

namespace velmora {

std::string makeUuid()
{
    std::random_device random;
    std::array<std::uint8_t, 16> bytes{};
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    bytes[6] = (bytes[6] & 0x0FU) | 0x40U; // version 4
    bytes[8] = (bytes[8] & 0x3FU) | 0x80U; // the RFC's variant
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += digits[bytes.at(i) >> 4U];
        text += digits[bytes.at(i) & 0x0FU];
    }
    return text;
}

} // namespace velmora
