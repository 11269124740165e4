// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/StateFile.h"
#include "platform/Preferences.h"
#include "platform/WorkQueue.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace velmora {

/// The preferences as `preferences.conf` in a folder of the user's, a line `key=value` each. What is not a
/// preference in it is set aside with the whole file, what is good is taken. Lines that this version does not
/// know are kept.
class PreferencesFile final : public Preferences {
public:
    /// An empty `folder`, which is a user's without a home, keeps them for this run alone. The folder is made
    /// with the first value. `clock` and `log` must outlive this; `queue` writes, and ends with it.
    PreferencesFile(std::filesystem::path folder, std::unique_ptr<WorkQueue> queue, const Clock& clock,
                    Log& log);
    PreferencesFile(const PreferencesFile&) = delete;
    PreferencesFile& operator=(const PreferencesFile&) = delete;

    bool boolean(std::string_view key) const override;
    void set(std::string_view key, bool value) override;
    std::string text(std::string_view key) const override;
    void setText(std::string_view key, std::string_view value) override;

private:
    void read();
    void save();
    std::string takeUnsaved();

    std::filesystem::path folder_;
    StateFile file_; // the queue's, once values are read
    std::map<std::string, std::string, std::less<>> values_;
    std::mutex mutex_;
    std::optional<std::string> unsaved_; ///< a write waits in the queue for the last of what was set
    std::unique_ptr<WorkQueue> queue_;   // last, so that it may finish
};

} // namespace velmora
