// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/RecordStores.h"
#include "wire/KeyedArchive.h"

/// Where the fleet's records live, on the session bus; see wire::face::fleet. Never with a password.
namespace velmora {

KeyedArchive archived(const RecordPlace& place);

/// Never fails: what is absent or cannot be has its default; a port that cannot be is 0, with which no place
/// is complete.
RecordPlace unarchivedPlace(const KeyedArchive& archive);

} // namespace velmora
