// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "charging/ChargerKeeper.h"
#include "charging/FirstHeld.h"
#include "platform/Log.h"

#include <functional>

namespace velmora {

/// What the charger held when this daemon first came: its limit becomes the limit, once, unless a client has
/// set one by then; and what each charger held is noted, to be given back one day. Before the disk has that
/// nothing may be written to a charger: after a crash what it holds would be taken for its owner's wish. Main
/// thread only.
class LimitAdoption {
public:
    struct Ports {
        Log& log;
        const ChargerKeeper& keeper;
        std::function<void(double percent)> adopt;
        std::function<void()> lookAgain; ///< soon: the charger has not told what it holds
        /// Saves what the daemon remembers; `done` is called once that is on the disk, or was refused by it.
        std::function<void(std::function<void()> done)> save;
        std::function<void()> settled; ///< the note that was on its way has arrived
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
    /// Chargers may be written to.
    bool isSettled() const { return isDone_ && notes_ == 0; }
    const FirstHeld::Entries& firstHeld() const { return firstHeld_.entries(); }

private:
    bool adopt();
    void note();

    Lifetime lifetime_;
    Ports ports_;
    bool isDone_;
    FirstHeld firstHeld_;
    int attempts_ = 0; ///< looks at a charger that did not tell what it holds
    int notes_ = 0;    ///< on their way to the disk
};

} // namespace velmora
