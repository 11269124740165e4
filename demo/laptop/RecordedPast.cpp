// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopPast.h"
#include "LaptopShow.h"
#include "base/WholeFile.h"
#include "history/HistoryCodec.h"
#include "thermal/ThermalMonitorService.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <stdexcept>

namespace velmora::past {

namespace {

using Row = std::vector<std::string_view>;

/// What stands before the next `separator`; both are taken away from `text`.
std::string_view until(char separator, std::string_view& text)
{
    const auto end = text.find(separator);
    const auto taken = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    return taken;
}

Row cells(std::string_view line)
{
    Row row;
    do {
        row.push_back(until(',', line));
    } while (!line.empty());
    return row;
}

Date date(std::string_view text)
{
    double year = 0;
    double month = 0;
    double day = 0;
    auto rest = text;
    const bool isDate = parseNumber(until('-', rest), 1971, 9999, year) &&
                        parseNumber(until('-', rest), 1, 12, month) && parseNumber(rest, 1, 31, day);
    const std::chrono::year_month_day found{std::chrono::year(static_cast<int>(year)),
                                            std::chrono::month(static_cast<unsigned>(month)),
                                            std::chrono::day(static_cast<unsigned>(day))};
    if (!isDate || !found.ok()) throw std::runtime_error("there is no date like YYYY-MM-DD");
    const std::chrono::sys_seconds midnight = std::chrono::sys_days(found);
    return Date::fromUnix(static_cast<double>(midnight.time_since_epoch().count()));
}

/// The rows of a table as samples.
class Table {
public:
    explicit Table(const Row& header)
    {
        for (std::size_t column = 0; column < header.size(); ++column) columns_[header[column]] = column;
        const bool isCharge = columns_.contains("full_mAh");
        date_ = columnOf(columns_.contains("date") ? "date" : "end");
        full_ = columnOf(isCharge ? "full_mAh" : "full_mWh");
        design_ = columnOf(isCharge ? "design_mAh" : "design_mWh");
        level_ = columnOf("level_max");
        if (!date_ || !full_ || !design_)
            throw std::runtime_error("there is no header with a date, a full and a design capacity");
    }

    /// Nothing for one without a capacity. Such tables tell neither of heat nor of charging.
    std::optional<HSHistorySnapshot> sample(const Row& row) const
    {
        if (cell(row, full_).empty()) return std::nullopt;
        const double full = number(cell(row, full_), 1, 1e7);
        const double design = number(cell(row, design_), 1, 1e7);
        const double level = level_ ? number(cell(row, level_), 0, 100) : 100;
        const auto heat = ThermalMonitorService::rawValue(ThermalMonitorService::ThermalState::nominal);
        return HSHistorySnapshot{date(cell(row, date_)), level, 100 * full / design, std::string(heat),
                                 false};
    }

private:
    using Column = std::optional<std::size_t>;

    Column columnOf(std::string_view name) const
    {
        const auto found = columns_.find(name);
        return found == columns_.end() ? std::nullopt : Column(found->second);
    }
    static std::string_view cell(const Row& row, Column column)
    {
        return *column < row.size() ? row[*column] : std::string_view();
    }
    static double number(std::string_view text, double lowest, double highest)
    {
        double value = 0;
        if (!parseNumber(text, lowest, highest, value))
            throw std::runtime_error("a capacity or level is missing or out of range");
        return value;
    }

    std::map<std::string_view, std::size_t> columns_;
    Column date_, full_, design_, level_;
};

/// The first line that is no comment is the header.
void take(std::string_view line, std::optional<Table>& table, Samples& samples)
{
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty() || line.starts_with('#')) return;
    if (!table) {
        table.emplace(cells(line));
    } else if (auto sample = table->sample(cells(line))) {
        samples.push_back(std::move(*sample));
    }
}

Samples tabled(std::string_view text)
{
    std::optional<Table> table;
    Samples samples;
    for (int number = 1; !text.empty(); ++number) {
        try {
            take(until('\n', text), table, samples);
        } catch (const std::runtime_error& fault) {
            throw std::runtime_error("line " + std::to_string(number) + ": " + fault.what());
        }
    }
    return samples;
}

Samples read(std::string_view bytes)
{
    if (!bytes.starts_with('[')) return tabled(bytes);
    auto samples = decodeHistory(bytes);
    if (!samples) throw std::runtime_error("it is not a history");
    std::erase_if(*samples, [](const auto& sample) { return !(sample.health >= 1 && sample.health <= 150); });
    return std::move(*samples);
}

} // namespace

Samples recorded(const std::filesystem::path& file, Date now)
try {
    const auto bytes = readWholeFile(file);
    if (!bytes) throw std::runtime_error("it cannot be read");
    auto samples = read(*bytes);
    if (samples.empty()) throw std::runtime_error("it holds no samples");
    std::ranges::stable_sort(samples, {}, &HSHistorySnapshot::timestamp);
    if (samples.size() > history_limits::maximumLength)
        samples.erase(samples.begin(), samples.end() - history_limits::maximumLength);
    const auto last = samples.back().timestamp;
    for (auto& sample : samples)
        sample.timestamp = now + (sample.timestamp - last - history_limits::minimumSpacing);
    return samples;
} catch (const std::runtime_error& fault) {
    throw std::runtime_error(file.string() + ": " + fault.what());
}

} // namespace velmora::past
