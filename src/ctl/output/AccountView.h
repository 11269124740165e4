// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "output/Json.h"
#include "texts/AccountTexts.h"

#include <string>

/// What is told of the account, for a person and for scripts.
namespace velmora::ctl {

std::string accountText(const account::Situation& now);
/// In words for a person.
std::string accountState(const account::Situation& now);
/// Under the names that all has on the bus; the date in UTC.
Json accountJson(const account::Situation& now);

} // namespace velmora::ctl
