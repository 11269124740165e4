// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "modules/ModuleLoader.h"
#include "platform/MainLoop.h"
#include "platform/RecordStores.h"
#include "records/RecordModule.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace velmora {

/// Record stores by modules of Velmora: SQLite for this computer, PostgreSQL for a server.
class LinuxRecordStores final : public RecordStores {
public:
    struct Setup {
        std::vector<std::filesystem::path> folders; ///< in which modules are looked for, in this order
        std::filesystem::path file;                 ///< of this computer's records; empty: there is no place
    };

    LinuxRecordStores(Setup setup, std::shared_ptr<MainLoop> loop, std::shared_ptr<Log> log);
    LinuxRecordStores(const LinuxRecordStores&) = delete;
    LinuxRecordStores& operator=(const LinuxRecordStores&) = delete;

    /// Gives the threads of stores that have ended a moment to end, too: a library that is at work while the
    /// program ends might crash it.
    ~LinuxRecordStores() override;

    std::shared_ptr<CloudDatabase> open(const RecordPlace& place, Password password) override;
    void test(const RecordPlace& place, Password password, Tested tested) override;

private:
    std::unique_ptr<RecordBackend> backend(const RecordPlace& place, Password password);

    Setup setup_;
    std::shared_ptr<MainLoop> loop_;
    std::shared_ptr<Log> log_;
    ModuleLoader loader_;
    std::shared_ptr<const void> presence_ = std::make_shared<char>(); ///< held by each thread
};

} // namespace velmora
