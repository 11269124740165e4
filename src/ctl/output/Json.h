// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/KeyedArchive.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// JSON as it is written; nothing here reads any. Each function gives a whole value as text.
namespace velmora::ctl::json {

/// In quotes; control characters become blanks, and what is not UTF-8 question marks: it may be printed to a
/// terminal.
std::string text(std::string_view value);
/// So that it reads back as the same double; "null" for one that is not finite.
std::string number(double value);
std::string integer(std::int64_t value);
std::string truth(bool value);
std::string array(const std::vector<std::string>& values);

/// An object, its keys in the order in which they are added.
class Object {
public:
    /// `value` is JSON.
    Object& add(std::string_view key, const std::string& value);
    std::string text() const { return "{" + members_ + "}"; }

private:
    std::string members_;
};

std::string of(const KeyedArchive::Value& value);
/// The record's values under their keys.
Object object(const KeyedArchive& record);

} // namespace velmora::ctl::json
