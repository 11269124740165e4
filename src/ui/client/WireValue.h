// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QMetaType>
#include <QVariant>
#include <QVariantMap>
#include <optional>
#include <string_view>
#include <type_traits>

#include "wire/KeyedArchive.h"
#include "wire/ModelFace.h"

/// The values of the wire's properties as Qt has them: a type for each D-Bus signature of wire/ModelFace.h.
namespace velmora::wired {

/// The type that Qt has for a signature; invalid for one that no property has.
QMetaType typeOf(std::string_view signature);

/// A value as the bus handed it over, in the type that Qt has for `signature`; nothing where it is of
/// another type, or not finite.
std::optional<QVariant> received(std::string_view signature, const QVariant& value);

/// A record; values of types that records do not have are left out.
KeyedArchive archived(const QVariantMap& record);
QVariantMap mapped(const KeyedArchive& archive);

/// Where `name` stands in `table`, if a mirror may show it as a `T`; the size of the table otherwise.
template <typename T, typename Table>
constexpr std::size_t rowOf(const Table& table, std::string_view name)
{
    constexpr std::string_view signature = std::is_same_v<T, bool>     ? "b"
                                           : std::is_same_v<T, double> ? "d"
                                           : std::is_same_v<T, qint64> ? "x"
                                                                       : "s";
    std::size_t row = 0;
    while (row < table.size() && !(table[row].name == name && table[row].type == signature)) ++row;
    return row;
}

} // namespace velmora::wired
