// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"

#include <functional>
#include <string>

namespace velmora {

/// Follows which connection owns a name on the bus. Any peer may send us any signal, and sd-bus takes it for
/// a match whatever sender the rule names: who trusts a signal asks here whether it came from the owner.
///
/// Never blocks; until the bus has answered, the name counts as not owned. Loop's thread only.
class NameOwner {
public:
    /// `appeared` is called when the name gains an owner that it did not have in the beginning, `gone` when
    /// it turns out to have none, in the beginning too; either may destroy this. The bus answers who owns the
    /// name now before it serves a match that is made afterwards. Throws std::system_error where the
    /// connection is gone.
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
