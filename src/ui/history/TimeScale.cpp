// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "history/TimeScale.h"

#include "base/Saturate.h"

#include <QDateTime>
#include <QLocale>
#include <algorithm>
#include <array>

namespace velmora {

namespace {

using duration::day;
using duration::hour;

TimeMark mark(const QDateTime& moment, const QString& format)
{
    return {Date::fromUnix(static_cast<double>(moment.toSecsSinceEpoch())),
            QLocale::c().toString(moment, format)};
}

/// From midnight on, so that a change to summer time moves no label off its hour.
std::vector<TimeMark> hourMarks(QDate date, Date to, int hours)
{
    std::vector<TimeMark> marks;
    for (;; date = date.addDays(1)) {
        for (int at = 0; at < 24; at += hours) {
            marks.push_back(
                mark({date, QTime(at, 0)}, at == 0 ? QStringLiteral("ddd d") : QStringLiteral("HH:mm")));
            if (marks.back().date > to) return marks;
        }
    }
}

std::vector<TimeMark> dayMarks(QDate date, Date to, int days)
{
    std::vector<TimeMark> marks;
    do marks.push_back(mark(date.startOfDay(), QStringLiteral("d MMM")));
    while (marks.back().date <= to && (date = date.addDays(days)).isValid());
    return marks;
}

std::vector<TimeMark> monthMarks(QDate date, Date to, int months)
{
    std::vector<TimeMark> marks;
    date = QDate(date.year(), 1, 1);
    do marks.push_back(mark(date.startOfDay(), QStringLiteral("MMM yyyy")));
    while (marks.back().date <= to && (date = date.addMonths(months)).isValid());
    return marks;
}

/// The smallest step that gives at most `maximum` marks; the largest where none does.
template <std::size_t Count>
int step(const std::array<int, Count>& steps, double units, int maximum)
{
    const auto found = std::ranges::find_if(steps, [&](int one) { return units / one <= maximum; });
    return found == steps.end() ? steps.back() : *found;
}

} // namespace

std::vector<TimeMark> timeMarks(Date from, Date to, int maximum)
{
    const auto first = QDateTime::fromSecsSinceEpoch(truncated(from.unixSeconds())).date();
    const double span = to - from;
    std::vector<TimeMark> marks;
    if (span <= 2 * day)
        marks = hourMarks(first, to, step(std::array{1, 2, 3, 6, 12}, span / hour, maximum));
    else if (span <= 120 * day)
        marks = dayMarks(first, to, step(std::array{1, 2, 5, 7, 14, 28}, span / day, maximum));
    else
        marks = monthMarks(first, to,
                           step(std::array{1, 2, 3, 6, 12, 24, 60, 120}, span / duration::month, maximum));
    std::erase_if(marks, [&](const TimeMark& one) { return one.date < from || one.date > to; });
    return marks;
}

} // namespace velmora
