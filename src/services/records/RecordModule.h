// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Log.h"
#include "platform/RecordStores.h"
#include "records/RecordBackend.h"

#include <filesystem>
#include <memory>

namespace velmora {

/// What a record store is reached with.
struct RecordAccess {
    RecordPlace place{};
    std::filesystem::path file{};      ///< of this computer's records; empty: the user has no data folder
    RecordStores::Password password{}; ///< asked at each connection, where it may take seconds
    std::shared_ptr<Log> log{};
};

/// A part of Velmora that speaks to one kind of record store: a shared object that is loaded at its first use
/// and stays loaded, so that who has no fleet is spared the libraries behind it.
///
/// It carries what it needs of Velmora within itself. Platform::current() is not set there, and nothing else
/// may be expected of global state.
struct RecordModule {
    /// Of the Velmora that it was built with. A module of another version is not used: after an upgrade the
    /// program that still runs would take its objects for something else. Stays the first member for ever.
    const char* version;
    std::unique_ptr<RecordBackend> (*open)(RecordAccess access);
};

/// The one function that a module exports, and its name.
using RecordModuleEntry = const RecordModule*();
inline constexpr auto recordModuleEntry = "velmora_record_module";

} // namespace velmora

/// Goes before the definition of the entry: nothing else of a module is to be seen.
#define VELMORA_RECORD_MODULE_ENTRY extern "C" __attribute__((visibility("default")))
