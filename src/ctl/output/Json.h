// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/KeyedArchive.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace velmora::ctl {

/// For programs that read what velmoractl prints. Objects keep the order in which their keys were added.
using Json = nlohmann::ordered_json;

Json jsonOf(const KeyedArchive::Value& value);
/// The record's values under their keys.
Json jsonOf(const KeyedArchive& record);

/// On one line and in ASCII, so that any terminal may show it: all else is escaped, what is not UTF-8 is
/// replaced. Numbers that are not finite become null.
std::string jsonText(const Json& value);

} // namespace velmora::ctl
