// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/PreferencesFile.h"

#include <algorithm>
#include <sys/stat.h>
#include <utility>

namespace velmora {

namespace {

constexpr mode_t ownersFile = 0600;
constexpr mode_t ownersFolder = 0700;

using Values = std::map<std::string, std::string, std::less<>>;

/// One line of a file; whether it is a preference.
bool take(std::string_view line, Values& values)
{
    const auto isPrintable = [](char one) { return one >= ' ' && one <= '~'; };
    const auto equals = line.find('=');
    if (equals == line.npos || equals == 0 || !std::ranges::all_of(line, isPrintable)) return false;
    values.insert_or_assign(std::string(line.substr(0, equals)), std::string(line.substr(equals + 1)));
    return true;
}

/// Whether every line of `text` is whole and a preference.
bool take(const std::string& text, Values& values)
{
    bool isGood = text.empty() || text.back() == '\n';
    for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
        end = std::min(text.find('\n', begin), text.size());
        isGood = take(std::string_view(text).substr(begin, end - begin), values) && isGood;
    }
    return isGood;
}

} // namespace

PreferencesFile::PreferencesFile(std::filesystem::path folder, std::unique_ptr<WorkQueue> queue,
                                 const Clock& clock, Log& log)
    : folder_(std::move(folder)),
      file_(folder_ / "preferences.conf", clock, log, ownersFile),
      queue_(std::move(queue))
{
    if (!folder_.empty()) read();
}

void PreferencesFile::read()
{
    const auto text = file_.read();
    if (text && !take(*text, values_)) file_.setAside("it holds lines that are no preferences");
}

bool PreferencesFile::boolean(std::string_view key) const
{
    return text(key) == "true";
}

void PreferencesFile::set(std::string_view key, bool value)
{
    setText(key, value ? "true" : "false");
}

std::string PreferencesFile::text(std::string_view key) const
{
    const auto found = values_.find(key);
    return found == values_.end() ? "" : found->second;
}

void PreferencesFile::setText(std::string_view key, std::string_view value)
{
    values_.insert_or_assign(std::string(key), std::string(value));
    if (folder_.empty()) return;
    std::string text;
    for (const auto& [name, kept] : values_) text.append(name).append("=").append(kept).append("\n");
    std::unique_lock lock(mutex_);
    const bool isWaiting = std::exchange(unsaved_, std::move(text)).has_value();
    lock.unlock();
    if (!isWaiting) queue_->async([this] { save(); });
}

void PreferencesFile::save()
{
    std::error_code error; // a folder that cannot be made is a file that cannot be written, which is said
    std::filesystem::create_directories(folder_.parent_path(), error);
    mkdir(folder_.c_str(), ownersFolder);
    file_.write(takeUnsaved());
}

std::string PreferencesFile::takeUnsaved()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(unsaved_, std::nullopt).value_or("");
}

} // namespace velmora
