// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"

#include <functional>
#include <string>

namespace velmora {

/// Follows which connection owns a name on the bus. Any peer may send any signal directly, and sd-bus matches
/// it whatever sender the rule names: check here whether a signal came from the owner before trusting it.
///
/// Never blocks; until the bus has answered, the name counts as not owned. Loop's thread only.
class NameOwner {
public:
    /// `appeared` is called when the name gains an owner that it did not have in the beginning, `gone` when
    /// it has none, in the beginning, too; either may destroy this. The bus answers the question for the
    /// present owner before it handles a later match. Throws std::system_error where the connection is
    /// gone.
    NameOwner(sd_bus* bus, const std::string& name, std::function<void()> appeared = {},
              std::function<void()> gone = {});
    NameOwner(const NameOwner&) = delete;
    NameOwner& operator=(const NameOwner&) = delete;

    bool exists() const { return !owner_.empty(); }
    bool sent(sd_bus_message* message) const;

private:
    int answered(sd_bus_message* reply);
    int changed(sd_bus_message* signal);
    void tellIfGone() const;

    std::function<void()> appeared_;
    std::function<void()> gone_;
    std::string owner_; ///< unique name; empty: none
    dbus::Slot changes_;
    dbus::Slot question_;
};

} // namespace velmora
