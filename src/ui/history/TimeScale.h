// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"

#include <QString>
#include <vector>

namespace velmora {

/// A mark on a scale of time.
struct TimeMark {
    Date date;
    QString label;
};

/// Marks at round local times from `from` to `to`, at most `maximum` of them: hours of a short time, days or
/// first days of months of a long one.
std::vector<TimeMark> timeMarks(Date from, Date to, int maximum);

} // namespace velmora
