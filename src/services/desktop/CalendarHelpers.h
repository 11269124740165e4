// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Mutex.h"
#include "desktop/HelperRun.h"
#include "platform/CalendarStore.h"
#include "platform/Complaints.h"
#include "wire/CalendarReport.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// The user's calendars: folders of iCalendar files, and the desktop's calendar service where its helper is
/// installed. Each reading runs a helper program, which ends after it, so that neither its memory nor what
/// strangers have written into a calendar is this program's. Readings come one at a time.
class CalendarHelpers final : public CalendarStore {
public:
    struct Setup {
        std::filesystem::path files;                ///< the helper that reads folders
        std::filesystem::path service;              ///< the one that asks the service; need not be there
        std::vector<std::filesystem::path> folders; ///< those that exist are read
        std::chrono::milliseconds patience = std::chrono::seconds{60}; ///< with each helper
    };
    static constexpr std::size_t maximumReportBytes = 16U << 20U;

    /// Where calendar programs and synchronisers keep such files, below the user's data folder and home; an
    /// empty path is none.
    static std::vector<std::filesystem::path> usualFolders(const std::filesystem::path& data,
                                                           const std::filesystem::path& home);

    /// `log` must outlive this.
    CalendarHelpers(Setup setup, Log& log);

    Authorization authorizationStatus() const override;
    void permit() override;
    void requestFullAccess(Completion completion) override;
    void relinquishAccess() override;
    std::optional<CalendarReading> events(Date from, Date to, const Predicate& isWanted) override;

private:
    using Reader = wire::calendar::Reader;

    std::vector<std::filesystem::path> presentFolders() const; ///< that can be read
    /// One reading.
    struct Question {
        std::filesystem::path helper;
        Date from{};
        Date to{};
        std::vector<std::filesystem::path> folders{};
    };

    using Events = std::vector<CalendarEvent>;

    /// Puts what a source tells now into `told`, which stays as it is where the source fails: false.
    static bool follow(Events& told, bool isThere, std::optional<Reader>& found);
    std::optional<Reader> report(const Question& question, const Predicate& isWanted);
    void complain(const Reader& reader);

    Setup setup_;
    HelperRun run_;
    std::atomic<bool> isAllowed_ = false;
    std::atomic<bool> isServiceUsable_ = false; ///< it has calendars, as far as was asked
    Complaints complaints_;
    Mutex mutex_;
    Events ofFiles_ VELMORA_GUARDED_BY(mutex_); ///< as each told them last; none without leave
    Events ofService_ VELMORA_GUARDED_BY(mutex_);
};

} // namespace velmora
