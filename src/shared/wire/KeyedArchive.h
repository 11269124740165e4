// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace velmora {

/// A record on its way through a wire or a file: values under keys, in the order in which they were encoded.
///
/// Reading never fails. A key that is missing, holds a value of another type or a number that is not finite
/// gives the default; keys that nobody asks for are passed over.
class KeyedArchive {
public:
    /// A date is a double, see Date.
    using Value = std::variant<bool, std::int64_t, double, std::string>;

    void encode(std::string key, Value value) { values_.emplace_back(std::move(key), std::move(value)); }
    void encode(std::string key, Date date) { encode(std::move(key), date.sinceReference); }

    /// Each value of `news` takes the place of the one under its key.
    void update(const KeyedArchive& news);

    bool decodeBool(std::string_view key, bool otherwise) const { return decode(key, otherwise); }
    std::int64_t decodeInteger(std::string_view key, std::int64_t otherwise) const
    {
        return decode(key, otherwise);
    }
    double decodeDouble(std::string_view key, double otherwise) const;
    std::string decodeText(std::string_view key, std::string otherwise) const;
    std::optional<Date> decodeDate(std::string_view key) const;

    /// Overwrites its texts, of which one is a secret, and forgets all.
    void wipe();

    const Value* find(std::string_view key) const; ///< null where there is none
    const std::vector<std::pair<std::string, Value>>& values() const { return values_; }

    friend bool operator==(const KeyedArchive&, const KeyedArchive&) = default;

private:
    template <typename T>
    T decode(std::string_view key, T otherwise) const
    {
        const auto* value = find(key);
        const auto* typed = value ? std::get_if<T>(value) : nullptr;
        return typed ? *typed : std::move(otherwise);
    }

    std::vector<std::pair<std::string, Value>> values_;
};

} // namespace velmora
