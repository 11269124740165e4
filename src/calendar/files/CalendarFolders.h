// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <utility>

namespace velmora {

/// Finds the iCalendar files (.ics) below folders, as calendar programs and synchronisers keep them. Links
/// are followed, each folder is entered once, and there are bounds for all that another program could let
/// grow.
class CalendarFolders {
public:
    static constexpr int maximumDepth = 6;
    static constexpr int maximumFiles = 20'000;
    static constexpr std::uintmax_t maximumBytes = 256U << 20U; ///< of all files

    struct Sink {
        std::function<void(const std::filesystem::path& file, const std::string& text)> file;
        std::function<void(const std::string& problem)> problem;
    };

    explicit CalendarFolders(Sink sink) : sink_(std::move(sink)) {}

    /// Reads what is below `folder`; whether there is such a folder. Hidden ones below it are left out, and
    /// those with what was thrown away.
    bool read(const std::filesystem::path& folder);

private:
    void walk(const std::filesystem::path& folder, int depth);
    void take(const std::filesystem::path& file);
    bool isNew(const std::filesystem::path& folder);

    Sink sink_;
    std::set<std::pair<std::uintmax_t, std::uintmax_t>> seen_; ///< folders, by device and number
    int files_ = 0;
    std::uintmax_t bytes_ = 0;
    bool isFull_ = false;
};

} // namespace velmora
