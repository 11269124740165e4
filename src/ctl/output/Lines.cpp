// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "output/Lines.h"

#include "base/Text.h"

#include <algorithm>

namespace velmora::ctl {

void Lines::add(const std::string& label, const std::string& text)
{
    if (text.empty()) return;
    lines_.emplace_back(printable(label), printable(text));
    widest_ = std::max(widest_, width(lines_.back().first));
}

std::string Lines::text() const
{
    std::string result;
    for (const auto& [label, text] : lines_)
        result.append(label).append(widest_ + 2 - width(label), ' ').append(text) += '\n';
    return result;
}

std::size_t Lines::width(const std::string& label)
{
    const auto begins = [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80U; };
    return static_cast<std::size_t>(std::ranges::count_if(label, begins));
}

} // namespace velmora::ctl
