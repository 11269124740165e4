// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "options/Words.h"

#include "base/Decimal.h"
#include "base/Text.h"
#include "base/Translation.h"

#include <charconv>
#include <filesystem>

namespace velmora::ctl {

std::optional<double> number(std::string_view text, double lowest, double highest)
{
    if (text.ends_with('%')) text.remove_suffix(1);
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole && value >= lowest && value <= highest ? std::optional<double>(value) : std::nullopt;
}

std::string whole(double value)
{
    return decimalText(value, 0);
}

std::string shown(std::string_view word)
{
    return printable(word.substr(0, 40));
}

bool onOff(std::string_view command, std::string_view word)
{
    if (word != "on" && word != "off")
        throw Fault{tr("\"%1\" needs \"on\" or \"off\".", std::string(command))};
    return word == "on";
}

std::string absolutePath(std::string_view path)
{
    std::error_code failed;
    const auto absolute = std::filesystem::absolute(path, failed);
    return failed ? std::string(path) : absolute.string();
}

} // namespace velmora::ctl
