// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/ChargerKeeper.h"
#include "charging/FirstHeld.h"
#include "platform/Log.h"

#include <functional>

namespace velmora {

/// What the charger held when this daemon first came: its limit becomes the limit, once, unless a client has
/// set one by then; and what each charger held is noted, to be given back one day. Before that is done
/// nothing may be written to a charger. Main thread only.
class LimitAdoption {
public:
    struct Ports {
        Log& log;
        const ChargerKeeper& keeper;
        std::function<void(double percent)> adopt;
        std::function<void()> lookAgain; ///< soon: the charger has not told what it holds
        std::function<void()> save;
    };

    /// As the last run left it.
    LimitAdoption(Ports ports, bool isDone, const FirstHeld::Entries& firstHeld)
        : ports_(std::move(ports)), isDone_(isDone), firstHeld_(firstHeld, isDone && firstHeld.empty())
    {
    }

    /// After each look, before anything is written.
    void observe();
    /// A client has set a limit.
    void settle();

    bool isDone() const { return isDone_; }
    const FirstHeld::Entries& firstHeld() const { return firstHeld_.entries(); }

private:
    void adopt();

    Ports ports_;
    bool isDone_;
    FirstHeld firstHeld_;
    int attempts_ = 0; ///< looks at a charger that did not tell what it holds
};

} // namespace velmora
