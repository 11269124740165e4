// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/RecordModule.h"

/// A module that an upgrade has left behind.
VELMORA_RECORD_MODULE_ENTRY const velmora::RecordModule* velmora_record_module()
{
    static constexpr velmora::RecordModule module{.version = "0.0.1", .open = nullptr};
    return &module;
}
