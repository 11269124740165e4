// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ChargeTypes.h"

#include <algorithm>
#include <cerrno>
#include <sstream>

namespace velmora {

namespace {
constexpr auto custom = "Custom";
constexpr auto longLife = "Long_Life";
} // namespace

ChargeTypes::ChargeTypes(std::string_view shown)
{
    std::istringstream words{std::string(shown)};
    for (std::string word; words >> word;) {
        const bool isChosen = word.size() > 2 && word.starts_with('[') && word.ends_with(']');
        offered_.push_back(isChosen ? word.substr(1, word.size() - 2) : word);
        if (isChosen) chosen_ = offered_.back();
    }
}

int ChargeTypes::store(std::string_view text)
{
    if (text.ends_with('\n')) text.remove_suffix(1);
    if (std::ranges::find(offered_, text) == offered_.end()) return EINVAL;
    chosen_ = text;
    return 0;
}

std::string ChargeTypes::text() const
{
    std::string text;
    for (const auto& type : offered_)
        text += (text.empty() ? "" : " ") + (type == chosen_ ? "[" + type + "]" : type);
    return text;
}

bool ChargeTypes::obeyThresholds() const
{
    return chosen_ == custom || std::ranges::find(offered_, custom) == offered_.end();
}

bool ChargeTypes::offerLongLife() const
{
    return std::ranges::find(offered_, longLife) != offered_.end();
}

bool ChargeTypes::areLongLife() const
{
    return chosen_ == longLife;
}

} // namespace velmora
