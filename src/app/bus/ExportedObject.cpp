// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/ExportedObject.h"

#include "bus/Records.h"

#include <algorithm>
#include <stdexcept>

namespace velmora {

namespace {

using wire::face::Access;
using wire::face::News;
using wire::face::Property;

/// Unsent messages above which long lists are not sent in addition.
constexpr std::uint64_t maximumUnsent = 16;

/// All callers on a session bus are this user's; asking the bus for the sender would block.
constexpr std::uint64_t anyone = SD_BUS_VTABLE_UNPRIVILEGED;
/// Likewise; sd-bus overwrites the message when it is done.
constexpr std::uint64_t secretly = anyone | SD_BUS_VTABLE_SENSITIVE;

} // namespace

ExportedObject::ExportedObject(MainLoop& loop, sd_bus* bus, const wire::face::Face& face)
    : loop_(loop), bus_(bus), face_(face), rows_(face.properties.size())
{
}

std::size_t ExportedObject::indexOf(std::string_view name) const
{
    const auto found = std::ranges::find(face_.properties, name, &Property::name);
    return static_cast<std::size_t>(found - face_.properties.begin());
}

void ExportedObject::addOperation(const char* name, const std::function<void()>& operate)
{
    operations_.push_back({name, false, [operate](sd_bus_message*) { operate(); }});
}

void ExportedObject::addOperation(const char* name, const std::function<void(const KeyedArchive&)>& operate)
{
    struct Wiped {
        KeyedArchive record;
        ~Wiped() { record.wipe(); }
    };
    const auto act = [operate](sd_bus_message* call) {
        const Wiped argument{dbus::readWholeArchive(call)};
        operate(argument.record);
    };
    operations_.push_back({name, true, act});
}

void ExportedObject::serve()
{
    fillTable();
    dbus::check(
        sd_bus_add_object_vtable(bus_, out(object_), face_.path, face_.interface, table_.data(), this),
        face_.interface);
}

template <std::uint64_t News>
sd_bus_vtable ExportedObject::entry(const Property& property)
{
    if (property.access == Access::read) return SD_BUS_PROPERTY(property.name, property.type, get, 0, News);
    return SD_BUS_WRITABLE_PROPERTY(property.name, property.type, get, set, 0, News | anyone);
}

void ExportedObject::fillTable()
{
    table_ = {SD_BUS_VTABLE_START(0)};
    for (std::size_t index = 0; index < rows_.size(); ++index) {
        const auto& property = face_.properties[index];
        const Row& row = rows_[index];
        if (!row.read || (property.access != Access::read && !row.write))
            throw std::logic_error(std::string(property.name) + " of " + face_.interface + " is not bound");
        table_.push_back(property.news == News::value
                             ? entry<SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE>(property)
                             : entry<SD_BUS_VTABLE_PROPERTY_EMITS_INVALIDATION>(property));
    }
    constexpr auto handler = dbus::serve<ExportedObject, &ExportedObject::operate>;
    for (const auto& operation : operations_) {
        if (operation.takesRecord)
            table_.push_back(SD_BUS_METHOD(operation.name, wire::recordType, "", handler, secretly));
        else
            table_.push_back(SD_BUS_METHOD(operation.name, "", "", handler, anyone));
    }
    table_.push_back(SD_BUS_VTABLE_END);
}

int ExportedObject::get(sd_bus* bus, const char*, const char*, const char* property, sd_bus_message* reply,
                        void* self, sd_bus_error* error) noexcept
try {
    const auto& object = *static_cast<ExportedObject*>(self);
    const std::size_t index = object.indexOf(property);
    std::uint64_t unsent = 0;
    dbus::check(sd_bus_get_n_queued_write(bus, &unsent), "look at the queue");
    if (object.face_.properties[index].news == News::invalidated && unsent > maximumUnsent)
        return sd_bus_error_set(error, SD_BUS_ERROR_LIMITS_EXCEEDED, "asked too often");
    object.rows_.at(index).read(reply);
    return 0;
} catch (const std::exception& failure) {
    return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, failure.what());
}

int ExportedObject::set(sd_bus*, const char*, const char*, const char* property, sd_bus_message* value,
                        void* self, sd_bus_error* error) noexcept
try {
    const auto& object = *static_cast<ExportedObject*>(self);
    const std::size_t index = object.indexOf(property);
    const auto& declared = object.face_.properties[index];
    const auto write = [&] { object.rows_.at(index).write(value, declared); };
    if (const auto handler = object.onSetting; handler && declared.access == Access::setting)
        handler(write);
    else
        write();
    return 0;
} catch (const property::Refusal& refusal) {
    return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, refusal.what());
} catch (const std::exception& failure) {
    return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, failure.what());
}

int ExportedObject::operate(sd_bus_message* call)
try {
    const std::string_view member = sd_bus_message_get_member(call);
    for (const auto& operation : operations_) {
        if (member == operation.name) operation.operate(call);
    }
    return sd_bus_reply_method_return(call, nullptr);
} catch (const std::invalid_argument& refusal) {
    return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "%s", refusal.what());
}

void ExportedObject::announceSoon()
{
    if (std::exchange(isAnnouncing_, true)) return;
    loop_.post(lifetime_.guard([this] { announce(); }));
}

void ExportedObject::announce()
{
    isAnnouncing_ = false;
    std::vector<char*> names;
    for (std::size_t index = 0; index < rows_.size(); ++index) {
        Row& row = rows_[index];
        if (row.hasChanged) row.isDirty = row.hasChanged();
        if (std::exchange(row.isDirty, false))
            names.push_back(const_cast<char*>(face_.properties[index].name));
    }
    if (names.empty()) return;
    names.push_back(nullptr);
    // Not checked: SessionBus handles a lost bus.
    sd_bus_emit_properties_changed_strv(bus_, face_.path, face_.interface, names.data());
}

} // namespace velmora
