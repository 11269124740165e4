// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "base/Observable.h"
#include "bus/PropertyValues.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

/// One object of the face on the session bus: the properties that a table of the wire declares, each bound to
/// an observable, and operations without arguments or with a record. What changed in one turn of the loop is
/// announced once, at its end. A value of the wrong type, not finite or out of range is answered with an
/// error and changes nothing.
///
/// Its owner binds every property, adds the operations, then serves it. Main thread only.
class ExportedObject {
public:
    /// Loop and bus must outlive the object; so must what `face` points to.
    ExportedObject(MainLoop& loop, sd_bus* bus, const wire::face::Face& face);
    ExportedObject(const ExportedObject&) = delete;
    ExportedObject& operator=(const ExportedObject&) = delete;

    /// `observable` is the property of that name; it must outlive the object.
    template <typename T>
    void bind(std::string_view name, Observable<T>& observable);

    /// A property that follows from others: looked at again whenever a bound or watched one changes, and by
    /// `derivedChanged`.
    template <typename Read>
    void derive(std::string_view name, Read value);
    /// A derived property follows from `observable`, which must outlive the object.
    template <typename T>
    void watch(Observable<T>& observable)
    {
        watched_.push_back(observable.observe([this](const T&) { announceSoon(); }));
    }
    void derivedChanged() { announceSoon(); }

    /// `operate` is called before the caller is answered. What it throws is the answer: a
    /// std::invalid_argument for a call that makes no sense.
    void addOperation(const char* name, const std::function<void()>& operate);
    /// Likewise, of an operation that takes a record. That may hold a secret: it is overwritten afterwards,
    /// as is the message.
    void addOperation(const char* name, const std::function<void(const KeyedArchive& record)>& operate);

    /// Called to write a property that the table calls a setting: by `write`, which throws where the value
    /// is not good. Without one it is just written.
    std::function<void(const std::function<void()>& write)> onSetting;

    /// Throws std::system_error where the bus takes no objects, std::logic_error where a property of the
    /// table is not bound.
    void serve();

private:
    /// How one property is read, written, and seen to change.
    struct Row {
        std::function<void(sd_bus_message* reply)> read{};
        std::function<void(sd_bus_message* value, const wire::face::Property& declared)> write{};
        std::function<bool()> hasChanged{}; ///< of a derived one
        Subscription changes{};
        bool isDirty = false;
    };

    struct Operation {
        const char* name;
        bool takesRecord;
        std::function<void(sd_bus_message* call)> operate;
    };

    std::size_t indexOf(std::string_view name) const;
    template <std::uint64_t News>
    static sd_bus_vtable entry(const wire::face::Property& property);
    void fillTable();
    void announceSoon();
    void announce();

    int operate(sd_bus_message* call);
    static int get(sd_bus*, const char*, const char*, const char* property, sd_bus_message* reply, void* self,
                   sd_bus_error* error) noexcept;
    static int set(sd_bus*, const char*, const char*, const char* property, sd_bus_message* value, void* self,
                   sd_bus_error* error) noexcept;

    Lifetime lifetime_;
    MainLoop& loop_;
    sd_bus* bus_;
    wire::face::Face face_;
    std::vector<Row> rows_; ///< in the order of the properties; never grows
    std::vector<Operation> operations_;
    std::vector<Subscription> watched_;
    bool isAnnouncing_ = false; ///< at the end of this turn
    std::vector<sd_bus_vtable> table_;
    dbus::Slot object_;
};

template <typename Read>
void ExportedObject::derive(std::string_view name, Read value)
{
    Row& row = rows_.at(indexOf(name));
    row.read = [value](sd_bus_message* reply) { property::append(reply, value()); };
    row.hasChanged = [value, was = value()]() mutable {
        auto is = value();
        return std::exchange(was, is) != is;
    };
}

template <typename T>
void ExportedObject::bind(std::string_view name, Observable<T>& observable)
{
    Row& row = rows_.at(indexOf(name));
    row.read = [&observable](sd_bus_message* reply) { property::append(reply, observable.get()); };
    if constexpr (property::Writable<T>) {
        row.write = [&observable](sd_bus_message* value, const wire::face::Property& declared) {
            T incoming{};
            property::read(value, declared, incoming);
            observable.set(std::move(incoming));
        };
    }
    // An observable reports every assignment; only changes go to the bus.
    row.changes = observable.observe([this, &row, &observable](const T& incoming) {
        if (incoming == observable.get()) return;
        row.isDirty = true;
        announceSoon();
    });
}

} // namespace velmora
