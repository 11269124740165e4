// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/InterfaceTable.h"

#include <utility>

namespace velmora {

InterfaceTable::InterfaceTable()
{
    rows_.push_back(SD_BUS_VTABLE_START(0));
}

const char* InterfaceTable::keep(std::string text)
{
    return texts_.emplace_back(std::move(text)).c_str();
}

void InterfaceTable::addMethod(const wire::Message& message, sd_bus_message_handler_t handler)
{
    rows_.push_back(SD_BUS_METHOD(keep(message.member()), keep(wire::Message::signature(message.arguments)),
                                  keep(wire::Message::signature(message.reply)), handler,
                                  SD_BUS_VTABLE_UNPRIVILEGED));
}

void InterfaceTable::addProperty(const char* name, const char* type, sd_bus_property_get_t get)
{
    rows_.push_back(SD_BUS_PROPERTY(name, type, get, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE));
}

void InterfaceTable::addSignal(const wire::Message& message)
{
    rows_.push_back(
        SD_BUS_SIGNAL(keep(message.member()), keep(wire::Message::signature(message.arguments)), 0));
}

dbus::Slot InterfaceTable::serve(sd_bus* bus, const char* path, const char* interface, void* self)
{
    rows_.push_back(SD_BUS_VTABLE_END);
    dbus::Slot slot;
    dbus::check(sd_bus_add_object_vtable(bus, out(slot), path, interface, rows_.data(), self), interface);
    return slot;
}

} // namespace velmora
