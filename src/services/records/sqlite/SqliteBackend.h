// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Handle.h"
#include "platform/Log.h"
#include "records/RecordBackend.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <sqlite3.h>
#include <sys/types.h>

namespace velmora {

/// The records of one user in a file of this computer, which several programs of that user may have open.
///
/// The file is readable by its user alone; one that is another user's, a link, or no file at all is not
/// touched. One that is damaged, or not Velmora's, is kept under another name, and a new one begun; likewise
/// where it was deleted. What is locked by another program, and what the disk does not take, fails within
/// `patience`.
class SqliteBackend final : public RecordBackend {
public:
    static constexpr std::chrono::milliseconds patience{5'000};

    SqliteBackend(std::filesystem::path file, std::shared_ptr<Log> log);

    CloudResult<StoredRecord> fetch(const std::string& name) override;
    std::optional<CloudError> save(const StoredRecord& record) override;
    CloudResult<std::vector<StoredRecord>> query(const std::string& type, std::size_t maximum) override;
    std::optional<CloudError> remove(const std::string& name) override;
    std::optional<CloudError> check() override;
    void rest() noexcept override;
    void cancel() noexcept override;

private:
    class Statement;
    using Act = std::function<int(sqlite3*)>; ///< gives a result code of SQLite

    std::optional<CloudError> perform(const Act& act);
    int attempt(const Act& act);
    int open();
    int prepareFile();
    int prepareDatabase();
    int execute(const char* statements);
    bool isStillThere() const;
    bool setAside();
    std::string freeName() const;
    CloudError error(int code) const;
    static int waitForLock(void* self, int times);

    std::filesystem::path file_;
    std::shared_ptr<Log> log_;
    std::chrono::steady_clock::time_point deadline_{}; ///< of the request
    std::atomic<bool> isCancelled_ = false;
    std::optional<CloudError> problem_; ///< with the file, where SQLite was not even asked
    Handle<sqlite3, sqlite3_close> database_;
    std::chrono::steady_clock::time_point nextAside_{}; ///< no file is set aside before
    bool isRefused_ = false;                            ///< to set one aside, and that was logged
    ino_t opened_ = 0; ///< the file that was opened: another may have taken its name since
};

} // namespace velmora
