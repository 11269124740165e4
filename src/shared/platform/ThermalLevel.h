// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Observable.h"

#include <functional>

namespace velmora {

/// How hot the machine reports to be, in four steps.
class ThermalLevel {
public:
    virtual ~ThermalLevel() = default;

    /// 0 nominal, 1 fair, 2 serious, 3 critical. Read afresh; never fails.
    virtual int level() = 0;

    /// Calls `changed` when the level may differ now, on any thread.
    [[nodiscard]] virtual Subscription observeChanges(std::function<void()> changed) = 0;
};

} // namespace velmora
