// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/QtLog.h"
#include "client/WireValue.h"

#include <QObject>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>
#include <vector>

#include "platform/Complaints.h"
#include "wire/ModelFace.h"

/// A property of a mirror, under the name that the wire's table `table` of its class has for it. Qt wants
/// each one declared; that name and type are the table's is checked when this is compiled.
#define VELMORA_MIRRORED(type, name)                                                                         \
    Q_PROPERTY(type name READ name NOTIFY changed)                                                           \
public:                                                                                                      \
    type name() const                                                                                        \
    {                                                                                                        \
        constexpr auto row = wired::rowOf<type>(table, #name);                                               \
        static_assert(row < table.size(), "the wire has no such property of this type");                     \
        return value(row).value<type>();                                                                     \
    }

namespace velmora {

/// One object of the resident application as the views see it: the properties that the wire's table declares,
/// under their own names and read only. A link to the application feeds it by `apply` and carries its two
/// requests; until then it shows what it began with. A mirror names this base in full: the type registration
/// of Qt 6.4 does not find it otherwise.
class RemoteObject : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
public:
    using Face = wire::face::Face;

    explicit RemoteObject(const Face& face, QObject* parent = nullptr);

    const Face& face() const { return face_; }

    /// Takes values from outside, then says `changed` once. A value of another type than the table has, or
    /// that is not finite, is refused with a line in the log and the one before stays; names that the table
    /// does not have are passed over.
    void apply(const QVariantMap& values);
    /// The application has no such object.
    virtual void giveUp() {}
    /// The application has told.
    bool isFed() const { return isFed_; }

    /// Asks the application to change a property; what then changes comes back from it.
    Q_INVOKABLE void set(const QString& property, const QVariant& value)
    {
        Q_EMIT setWanted(property, value);
    }
    /// What the table allows for a setting's number; 0 for any other.
    Q_INVOKABLE double lowest(const QString& property) const { return declared(property).lowest; }
    Q_INVOKABLE double highest(const QString& property) const { return declared(property).highest; }

Q_SIGNALS:
    void changed();
    void setWanted(const QString& property, const QVariant& value);
    void operationWanted(const QString& operation);
    /// Of one that takes a record.
    void recordOperationWanted(const QString& operation, const QVariantMap& record);

protected:
    /// The value of a row of the table; invalid before the first.
    const QVariant& value(std::size_t row) const { return values_[row]; }
    QVariant value(const char* name) const { return values_[rowOf(name)]; }
    /// A date as a person reads it; empty where there is none.
    QString moment(const char* name, const char* format = "d MMM yyyy, HH:mm") const;
    /// Shows this from now on, until another one is told.
    void keep(const char* name, const QVariant& value) { values_[rowOf(name)] = value; }

    /// A sound value has come; a mirror that shows something else instead takes it here.
    virtual void take(std::size_t row, const QVariant& value) { values_[row] = value; }
    /// All values of a batch have been taken.
    virtual void taken() {}

private:
    std::size_t rowOf(std::string_view name) const;
    wire::face::Property declared(const QString& property) const;

    Face face_;
    std::vector<QVariant> values_; ///< in the order of the table
    bool isFed_ = false;
    QtLog log_;
    Complaints complaints_{log_, "RemoteObject"};
};

} // namespace velmora
