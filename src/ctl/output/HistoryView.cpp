// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "output/HistoryView.h"

#include "base/Decimal.h"
#include "base/Moment.h"
#include "base/Translation.h"
#include "output/Json.h"
#include "output/StatusView.h"
#include "texts/PanelTexts.h"

#include <nlohmann/json.hpp>

namespace velmora::ctl {

namespace {

std::string aligned(const std::string& text, std::size_t width)
{
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

std::string percent(double value)
{
    return aligned(decimalText(value, 1) + '%', 7);
}

} // namespace

std::string historyText(const std::vector<HSHistorySnapshot>& samples)
{
    std::string text;
    for (const auto& sample : samples)
        text += localTime(sample.timestamp) + percent(sample.percentage) + "  " +
                tr("health %1", percent(sample.health)) + "  " +
                (sample.isCharging ? tr("charging") : tr("not charging")) + "  " +
                tr("heat: %1", panel::thermalText(heatOf(sample.thermalState))) + '\n';
    return text;
}

std::string historyCsv(const std::vector<HSHistorySnapshot>& samples)
{
    std::string text = "time,percentage,health,thermalState,isCharging\n";
    const auto number = [](double value) { return jsonText(Json(value)); };
    for (const auto& sample : samples)
        text += utcTime(sample.timestamp) + ',' + number(sample.percentage) + ',' + number(sample.health) +
                ',' + std::string(ThermalMonitorService::rawValue(heatOf(sample.thermalState))) + ',' +
                (sample.isCharging ? "true\n" : "false\n");
    return text;
}

std::string historyJson(const std::vector<HSHistorySnapshot>& samples)
{
    auto objects = Json::array();
    for (const auto& sample : samples)
        objects.push_back({{"time", utcTime(sample.timestamp)},
                           {"percentage", sample.percentage},
                           {"health", sample.health},
                           {"thermalState", ThermalMonitorService::rawValue(heatOf(sample.thermalState))},
                           {"isCharging", sample.isCharging}});
    return jsonText(objects) + '\n';
}

} // namespace velmora::ctl
