// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/RecordModule.h"
#include "records/postgresql/PostgresBackend.h"

VELMORA_RECORD_MODULE_ENTRY const velmora::RecordModule* velmora_record_module()
{
    static constexpr velmora::RecordModule module{
        .version = VELMORA_VERSION,
        .open = [](velmora::RecordAccess access) -> std::unique_ptr<velmora::RecordBackend> {
            return std::make_unique<velmora::postgresql::PostgresBackend>(std::move(access));
        }};
    return &module;
}
