// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "wire/VelmoraProtocol.h"

#include <list>
#include <string>
#include <vector>

namespace velmora {

/// The members of one interface as sd-bus serves them, made from what wire:: declares. Everybody may call
/// them: what a caller may do is decided by who it is, not by the bus.
///
/// sd-bus keeps pointers into the table: fill it, then serve it, and destroy the slot first.
class InterfaceTable {
public:
    InterfaceTable();
    InterfaceTable(const InterfaceTable&) = delete;
    InterfaceTable& operator=(const InterfaceTable&) = delete;

    void addMethod(const wire::Message& message, sd_bus_message_handler_t handler);
    /// A read-only one whose changes are announced with their values. The texts must outlive the table.
    void addProperty(const char* name, const char* type, sd_bus_property_get_t get);
    void addSignal(const wire::Message& message);

    /// Serves the members at `path`, with `self` for the handlers. Throws std::system_error.
    dbus::Slot serve(sd_bus* bus, const char* path, const char* interface, void* self);

private:
    const char* keep(std::string text);

    std::list<std::string> texts_; ///< the rows point at these
    std::vector<sd_bus_vtable> rows_;
};

} // namespace velmora
