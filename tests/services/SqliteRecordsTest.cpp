// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LoopTest.h"
#include "ManualLoop.h"
#include "RecordingLog.h"
#include "StoreRequests.h"
#include "TemporaryFolder.h"
#include "records/LinuxRecordStores.h"

#include <cmath>
#include <limits>
#include <sqlite3.h>
#include <sys/stat.h>

namespace velmora {
namespace {

using Fields = CloudRecord::Fields;

/// Stores in a file of the test's own, by the module as it was built.
struct SqliteRecordsTest : LoopTest {
    const RecordPlace here{};
    TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "Velmora" / "cloud.db";
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    std::shared_ptr<ManualLoop> time = std::make_shared<ManualLoop>();
    LinuxRecordStores stores{
        {.folders = {folder.path(), std::filesystem::path(VELMORA_BIN) / "../lib/velmora"}, .file = file},
        time,
        log};

    std::shared_ptr<CloudDatabase> open() { return stores.open(here, nullptr); }
};

TEST_F(SqliteRecordsTest, MergesWhatWasSetAndKeepsTheOrderOfCreation)
{
    const auto store = open();
    const Date when = Date::fromUnix(1'795'000'000.123456);
    EXPECT_EQ(problem(save(*store, "b", {{"percentage", 80.5}, {"lastUpdate", when}})), "");
}

} // namespace
} // namespace velmora
