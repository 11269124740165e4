// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "fleet/DeviceReport.h"
#include "wire/KeyedArchive.h"

/// A device's report on the session bus: what its record has, under the names of the record's fields, and its
/// identifier; see wire::face::fleet.
namespace velmora {

/// What is not known has no key.
KeyedArchive archived(const DeviceReport& report);

/// Never fails: what is absent or of another type is left out, as from a record.
DeviceReport unarchivedReport(const KeyedArchive& archive);

} // namespace velmora
