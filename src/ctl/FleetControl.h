// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "link/FleetLink.h"
#include "options/Options.h"

#include <string>

namespace velmora::ctl {

/// The commands of `velmoractl fleet`, over the user's `velmora`. All throw a Failure where they cannot be
/// done; what a command does has been done when it returns, as far as that can be seen from this machine.
class FleetControl {
public:
    explicit FleetControl(const Request& request);

    /// What is to be printed.
    std::string run();

private:
    std::string status();
    std::string devices();
    std::string turnOn();
    std::string leave();
    std::string accept();
    std::string test();
    std::string command();
    std::string remove();

    KeyedArchive placeRecord(const RecordPlace& place) const;
    void expectUsable(const RecordPlace& place, const KeyedArchive& record);
    void take(const RecordPlace& place);
    std::string told(const FleetSnapshot& now) const;
    std::string done(const std::string& sentence) const;

    const Request& request_;
    EventLoop loop_;
    FleetLink link_;
};

} // namespace velmora::ctl
