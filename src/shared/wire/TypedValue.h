// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/KeyedArchive.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace velmora::wire {

/// The value under `key`, or `otherwise` where there is none. Unlike the archive's own decoding it throws
/// std::invalid_argument, in words for who wrote it, for a value of another type.
template <typename T>
T typed(const KeyedArchive& archive, const std::string& key, T otherwise)
{
    const auto* value = archive.find(key);
    if (value && !std::holds_alternative<T>(*value))
        throw std::invalid_argument(key + " takes a value of another type");
    return value ? std::get<T>(*value) : std::move(otherwise);
}

/// Likewise for a value that must be there.
template <typename T>
T required(const KeyedArchive& archive, const std::string& key)
{
    if (!archive.find(key)) throw std::invalid_argument(key + " is missing");
    return typed<T>(archive, key, {});
}

} // namespace velmora::wire
