// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "files/CalendarFolders.h"

#include "base/WholeFile.h"

#include <algorithm>
#include <sys/stat.h>
#include <vector>

namespace velmora {

namespace {

bool isCalendar(const std::filesystem::path& file)
{
    const auto extension = file.extension().string();
    return extension == ".ics" || extension == ".ICS";
}

bool isLeftOut(const std::filesystem::path& folder)
{
    const auto name = folder.filename().string();
    return name.starts_with(".") || name == "trash" || name == "Trash";
}

} // namespace

bool CalendarFolders::read(const std::filesystem::path& folder)
{
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) return false;
    walk(folder, 0);
    return true;
}

bool CalendarFolders::isNew(const std::filesystem::path& folder)
{
    struct stat found {};
    return stat(folder.c_str(), &found) == 0 && seen_.emplace(found.st_dev, found.st_ino).second;
}

void CalendarFolders::walk(const std::filesystem::path& folder, int depth)
{
    if (depth > maximumDepth || isFull_ || !isNew(folder)) return;
    std::error_code error;
    std::filesystem::directory_iterator entries(folder, error);
    if (error) return sink_.problem(folder.string() + " cannot be read: " + error.message() + ".");
    std::vector<std::filesystem::path> folders;
    for (; entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        if (error || isFull_) break;
        if (std::error_code ignored; entries->is_directory(ignored)) {
            if (!isLeftOut(entries->path())) folders.push_back(entries->path());
        } else if (isCalendar(entries->path())) {
            take(entries->path());
        }
    }
    std::ranges::sort(folders);
    for (const auto& one : folders) walk(one, depth + 1);
}

void CalendarFolders::take(const std::filesystem::path& file)
{
    if (++files_ > maximumFiles || bytes_ > maximumBytes) {
        isFull_ = true;
        return sink_.problem("There are more calendar files than Velmora reads; some are passed over.");
    }
    const auto text = readWholeFile(file);
    if (!text)
        return sink_.problem(file.string() +
                             " is passed over: it cannot be read, is no file, or is too large.");
    bytes_ += text->size();
    sink_.file(file, *text);
}

} // namespace velmora
