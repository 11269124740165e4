// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "output/Json.h"

#include <nlohmann/json.hpp>

namespace velmora::ctl {

Json jsonOf(const KeyedArchive::Value& value)
{
    return std::visit([](const auto& held) { return Json(held); }, value);
}

Json jsonOf(const KeyedArchive& record)
{
    auto result = Json::object();
    for (const auto& [key, value] : record.values()) result[key] = jsonOf(value);
    return result;
}

std::string jsonText(const Json& value)
{
    return value.dump(-1, ' ', true, Json::error_handler_t::replace);
}

} // namespace velmora::ctl
