// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/sqlite/SqliteBackend.h"

#include "base/FileDescriptor.h"
#include "records/RecordCodec.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <thread>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "SqliteRecords";
constexpr mode_t ownersAlone = 0600;
constexpr std::chrono::minutes asidePause{1}; // what is damaged again by then has another cause

constexpr auto schema =
    "CREATE TABLE IF NOT EXISTS record(seq INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, type TEXT NOT "
    "NULL,"
    " fields TEXT NOT NULL CHECK(json_valid(fields)), version INTEGER NOT NULL DEFAULT 1) STRICT;"
    "CREATE INDEX IF NOT EXISTS record_type ON record(type, seq);";
constexpr auto usedColumns = "SELECT seq, name, type, fields, version FROM record LIMIT 0";
constexpr auto saveStatement =
    "INSERT INTO record(type, name, fields) VALUES(?1, ?2, ?3) ON CONFLICT(name) DO UPDATE"
    " SET fields = json_patch(fields, excluded.fields), version = version + 1";
constexpr auto fetchStatement = "SELECT type, name, fields FROM record WHERE name = ?1";
constexpr auto queryStatement = "SELECT type, name, fields FROM record WHERE type = ?1 ORDER BY seq LIMIT ?2";
constexpr auto removeStatement = "DELETE FROM record WHERE name = ?1";

/// A write-ahead log needs memory that all who have the file open share, which machines do not.
bool isOnNetwork(const std::filesystem::path& file)
{
    constexpr std::array<std::uint32_t, 18> networks{
        0x6969U,     0x517BU,     0xFE534D42U, 0xFF534D42U, // NFS, SMB, SMB2, CIFS
        0x65735546U, 0x01021997U, 0x786F4256U,              // FUSE (may be one), 9P, VirtualBox
        0x00C36400U, 0x0BD00BD0U, 0x5346414FU, 0x6B414653U, // Ceph, Lustre, AFS and the kernel's AFS
        0x73757245U, 0x564CU,     0x01161970U, 0x7461636FU, // Coda, NCP, GFS2, OCFS2
        0x47504653U, 0x19830326U, 0xAAD7AAEAU};             // GPFS, BeeGFS, PanFS
    struct statfs system {};
    return statfs(file.c_str(), &system) == 0 &&
           std::ranges::find(networks, static_cast<std::uint32_t>(system.f_type)) != networks.end();
}

bool isDamage(int code)
{
    return (code & 0xff) == SQLITE_CORRUPT || (code & 0xff) == SQLITE_NOTADB;
}

bool isNoSpace(int systemError)
{
    return systemError == ENOSPC || systemError == EDQUOT;
}

RecordFault faultOf(int code, int systemError)
{
    switch (code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return RecordFault::slow;
    case SQLITE_FULL:
        return RecordFault::full;
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_READONLY:
    case SQLITE_IOERR:
        return isNoSpace(systemError) ? RecordFault::full : RecordFault::file;
    default:
        return isDamage(code) ? RecordFault::file : RecordFault::other;
    }
}

} // namespace

/// One statement: its arguments are bound from the first to the last, and its rows are records.
class SqliteBackend::Statement {
public:
    Statement(sqlite3* database, const char* text)
        : code_(sqlite3_prepare_v2(database, text, -1, out(statement_), nullptr))
    {
    }

    /// The text must stay until the statement has run.
    Statement& with(const std::string& text)
    {
        if (code_ == SQLITE_OK)
            code_ = sqlite3_bind_text64(statement_.get(), ++bound_, text.data(), text.size(), SQLITE_STATIC,
                                        SQLITE_UTF8);
        return *this;
    }
    Statement& with(std::size_t number)
    {
        if (code_ == SQLITE_OK)
            code_ = sqlite3_bind_int64(statement_.get(), ++bound_, static_cast<sqlite3_int64>(number));
        return *this;
    }

    /// To its end; what it gives is appended to `records`.
    int run(std::vector<StoredRecord>* records = nullptr)
    {
        if (code_ != SQLITE_OK) return code_;
        while ((code_ = sqlite3_step(statement_.get())) == SQLITE_ROW)
            if (records) records->push_back({.type = text(0), .name = text(1), .fields = text(2)});
        return code_ == SQLITE_DONE ? SQLITE_OK : code_;
    }

private:
    /// Empty, which is no record, for one that is too long to be one.
    std::string text(int column)
    {
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column));
        return bytes && size <= record_codec::maximumBytes ? std::string(bytes, size) : std::string();
    }

    Handle<sqlite3_stmt, sqlite3_finalize> statement_;
    int code_;
    int bound_ = 0;
};

SqliteBackend::SqliteBackend(std::filesystem::path file, std::shared_ptr<Log> log)
    : file_(std::move(file)), log_(std::move(log))
{
}

// -- Requests

CloudResult<StoredRecord> SqliteBackend::fetch(const std::string& name)
{
    std::vector<StoredRecord> found;
    const auto failed = perform(
        [&](sqlite3* database) { return Statement(database, fetchStatement).with(name).run(&found); });
    if (failed) return *failed;
    if (!found.empty()) return std::move(found.front());
    return CloudError{.code = CloudError::Code::notFound, .text = "there is no record " + name};
}

std::optional<CloudError> SqliteBackend::save(const StoredRecord& record)
{
    return perform([&](sqlite3* database) {
        return Statement(database, saveStatement)
            .with(record.type)
            .with(record.name)
            .with(record.fields)
            .run();
    });
}

CloudResult<std::vector<StoredRecord>> SqliteBackend::query(const std::string& type, std::size_t maximum)
{
    std::vector<StoredRecord> found;
    const auto failed = perform([&](sqlite3* database) {
        return Statement(database, queryStatement).with(type).with(maximum).run(&found);
    });
    if (failed) return *failed;
    return found;
}

std::optional<CloudError> SqliteBackend::remove(const std::string& name)
{
    return perform([&](sqlite3* database) { return Statement(database, removeStatement).with(name).run(); });
}

std::optional<CloudError> SqliteBackend::check()
{
    return perform([](sqlite3*) { return SQLITE_OK; });
}

/// Whoever closes it last also tidies the file.
void SqliteBackend::rest() noexcept
{
    database_.reset();
}

void SqliteBackend::cancel() noexcept
{
    isCancelled_ = true;
}

std::optional<CloudError> SqliteBackend::perform(const Act& act)
{
    deadline_ = std::chrono::steady_clock::now() + patience;
    if (database_ && !isStillThere()) database_.reset();
    int code = attempt(act);
    if (isDamage(code) && std::chrono::steady_clock::now() >= nextAside_ && setAside()) code = attempt(act);
    if (code == SQLITE_OK) return std::nullopt;
    auto failed = error(code);
    // The next request opens the file anew: it may be another one then, or another disk.
    database_.reset();
    return failed;
}

int SqliteBackend::attempt(const Act& act)
{
    int code = database_ ? SQLITE_OK : open();
    // Of two that begin the file at once SQLite has one fail rather than each wait for the other.
    while ((code & 0xff) == SQLITE_BUSY && waitForLock(this, 0)) {
        database_.reset();
        code = open();
    }
    return code == SQLITE_OK ? act(database_.get()) : code;
}

/// Called by SQLite while another program holds the lock. Whether to try again.
int SqliteBackend::waitForLock(void* self, int /*times*/)
{
    const auto& backend = *static_cast<const SqliteBackend*>(self);
    if (backend.isCancelled_ || std::chrono::steady_clock::now() >= backend.deadline_) return 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return 1;
}

CloudError SqliteBackend::error(int code) const
{
    if (problem_) return *problem_;
    const int systemError = database_ ? sqlite3_system_errno(database_.get()) : 0;
    std::string text = file_.string() + ": ";
    text += database_ ? sqlite3_errmsg(database_.get()) : sqlite3_errstr(code);
    return {.text = std::move(text), .fault = faultOf(code, systemError)};
}

// -- The file

int SqliteBackend::open()
{
    problem_.reset();
    int code = prepareFile();
    if (code != SQLITE_OK) return code;
    // Not through links: the folder's are followed here, the file may be none.
    std::error_code unresolved;
    const auto folder = std::filesystem::canonical(file_.parent_path(), unresolved);
    code = sqlite3_open_v2((folder / file_.filename()).c_str(), out(database_),
                           SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_EXRESCODE, nullptr);
    return code == SQLITE_OK ? prepareDatabase() : code;
}

/// Sees to it that there is a file of this user's alone. It is looked at by its name: to close a descriptor
/// of it would give up the locks that others in this program hold on it.
int SqliteBackend::prepareFile()
{
    const auto refused = [this](const std::string& why, RecordFault fault = RecordFault::file) {
        problem_ = CloudError{.text = file_.string() + why, .fault = fault};
        return SQLITE_CANTOPEN;
    };
    if (file_.empty()) return refused("there is no folder for the records, HOME is not set");
    if (std::error_code error; !std::filesystem::exists(file_.parent_path(), error)) {
        std::filesystem::create_directories(file_.parent_path().parent_path(), error);
        mkdir(file_.parent_path().c_str(), 0700);
    }
    const FileDescriptor made(::open(file_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, ownersAlone));
    const int whyNot = errno;
    struct stat found {};
    if (lstat(file_.c_str(), &found) != 0)
        return refused(" cannot be made: " + std::error_code(whyNot, std::generic_category()).message(),
                       isNoSpace(whyNot) ? RecordFault::full : RecordFault::file);
    if (!S_ISREG(found.st_mode) || found.st_nlink > 1) return refused(" is a link, or not a file");
    if (found.st_uid != geteuid()) return refused(" belongs to another user");
    if ((found.st_mode & 0777) != ownersAlone) chmod(file_.c_str(), ownersAlone);
    opened_ = found.st_ino;
    return SQLITE_OK;
}

int SqliteBackend::prepareDatabase()
{
    auto* database = database_.get();
    sqlite3_busy_handler(database, waitForLock, this);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    if (sqlite3_db_readonly(database, "main") == 1) return SQLITE_READONLY;
    int code = execute(isOnNetwork(file_) ? "PRAGMA journal_mode=DELETE; PRAGMA synchronous=FULL"
                                          : "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL");
    if (code != SQLITE_OK) return code;
    code = execute((std::string("PRAGMA cache_size=-256;") + schema).c_str());
    if (code == SQLITE_OK) code = execute(usedColumns);
    return code == SQLITE_ERROR ? SQLITE_NOTADB : code;
}

/// Who deletes the file, or puts another one there, is not to find later that nothing went into it.
bool SqliteBackend::isStillThere() const
{
    struct stat found {};
    return lstat(file_.c_str(), &found) == 0 && found.st_ino == opened_;
}

int SqliteBackend::execute(const char* statements)
{
    return sqlite3_exec(database_.get(), statements, nullptr, nullptr, nullptr);
}

/// Whether a new file may be begun: the damaged one is kept under another name, its log with it.
bool SqliteBackend::setAside()
{
    const std::string why = database_ ? sqlite3_errmsg(database_.get()) : "it is no database";
    database_.reset();
    if (!isStillThere()) return true; // another program has
    const std::string aside = freeName();
    std::error_code failed;
    std::filesystem::rename(file_, aside, failed);
    const auto damage = file_.string() + " is damaged, or no file of Velmora's (" + why + "): ";
    nextAside_ = std::chrono::steady_clock::now() + asidePause;
    if (failed) {
        const bool isNews = !std::exchange(isRefused_, true);
        if (isNews) log_->error(category, damage + "it cannot be set aside: " + failed.message() + ".");
        return false;
    }
    isRefused_ = false;
    for (const char* suffix : {"-wal", "-shm"}) {
        std::error_code absent;
        std::filesystem::rename(file_.string() + suffix, aside + suffix, absent);
    }
    log_->error(category, damage + "set aside as " + aside +
                              ", a new one is begun. Each machine uploads itself again.");
    return true;
}

/// The last of a few where all are taken: that one is replaced.
std::string SqliteBackend::freeName() const
{
    constexpr int most = 5;
    std::string name;
    for (int number = 1; number <= most; ++number) {
        name = file_.string() + ".broken-" + std::to_string(number);
        std::error_code error;
        if (!std::filesystem::exists(name, error)) break;
    }
    return name;
}

} // namespace velmora
