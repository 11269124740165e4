// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/WireValue.h"

#include "client/QtText.h"

#include <QDBusArgument>
#include <algorithm>
#include <cmath>

namespace velmora::wired {

namespace {

/// A container as a bus hands it over, in the type that Qt has for its signature.
QVariant unpacked(std::string_view signature, const QVariant& value)
{
    if (value.metaType() != QMetaType::fromType<QDBusArgument>()) return value;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature().toStdString() != signature) return {};
    if (signature == "ai") return QVariant::fromValue(qdbus_cast<QList<int>>(argument));
    if (signature == "ad") return QVariant::fromValue(qdbus_cast<QList<double>>(argument));
    if (signature == wire::recordType) return qdbus_cast<QVariantMap>(argument);
    if (signature == wire::recordListType)
        return QVariant::fromValue(qdbus_cast<QList<QVariantMap>>(argument));
    return {};
}

bool isFinite(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<double>()) return std::isfinite(value.toDouble());
    if (value.metaType() != QMetaType::fromType<QList<double>>()) return true;
    return std::ranges::all_of(value.value<QList<double>>(), [](double one) { return std::isfinite(one); });
}

} // namespace

QMetaType typeOf(std::string_view signature)
{
    if (signature == "b") return QMetaType::fromType<bool>();
    if (signature == "d") return QMetaType::fromType<double>();
    if (signature == "x") return QMetaType::fromType<qint64>();
    if (signature == "s") return QMetaType::fromType<QString>();
    if (signature == "as") return QMetaType::fromType<QStringList>();
    if (signature == "ai") return QMetaType::fromType<QList<int>>();
    if (signature == "ad") return QMetaType::fromType<QList<double>>();
    if (signature == wire::recordType) return QMetaType::fromType<QVariantMap>();
    if (signature == wire::recordListType) return QMetaType::fromType<QList<QVariantMap>>();
    return {};
}

std::optional<QVariant> received(std::string_view signature, const QVariant& value)
{
    auto plain = unpacked(signature, value);
    if (!plain.isValid() || plain.metaType() != typeOf(signature) || !isFinite(plain)) return std::nullopt;
    return plain;
}

KeyedArchive archived(const QVariantMap& record)
{
    KeyedArchive archive;
    for (auto entry = record.begin(); entry != record.end(); ++entry) {
        const auto key = entry.key().toStdString();
        const auto& value = entry.value();
        if (const auto flag = received("b", value))
            archive.encode(key, flag->toBool());
        else if (const auto number = received("d", value))
            archive.encode(key, number->toDouble());
        else if (const auto integer = received("x", value))
            archive.encode(key, std::int64_t{integer->toLongLong()});
        else if (const auto text = received("s", value))
            archive.encode(key, text->toString().toStdString());
    }
    return archive;
}

QVariantMap mapped(const KeyedArchive& archive)
{
    QVariantMap record;
    const auto plain = [](const auto& value) {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, std::string>)
            return QVariant(text(value));
        else if constexpr (std::is_same_v<Value, std::int64_t>)
            return QVariant::fromValue<qint64>(value);
        else
            return QVariant(value);
    };
    for (const auto& [key, value] : archive.values()) record.insert(text(key), std::visit(plain, value));
    return record;
}

} // namespace velmora::wired
