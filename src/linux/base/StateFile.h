// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Clock.h"
#include "platform/Complaints.h"
#include "platform/Log.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace velmora {

/// A small file that is whole at every moment: written under another name, synced, renamed, the folder
/// synced. One thread at a time.
class StateFile {
public:
    /// `mode` is the file's, before the process's mask.
    StateFile(std::filesystem::path path, const Clock& clock, Log& log, mode_t mode = 0644);

    /// All of it; nothing where there is none or it cannot be read (a log line says why unless it is just
    /// absent).
    std::optional<std::string> read();

    /// Whether `bytes` are safely on the disk. A failure leaves the old contents; one log line a cause.
    bool write(std::string_view bytes);

    /// Renames the file to a new name beside its own and logs why, so that no data of the user is deleted.
    void setAside(std::string_view why);

private:
    int writeTemporary(const std::filesystem::path& temporary, std::string_view bytes) const;
    int syncFolder() const;

    std::filesystem::path path_;
    mode_t mode_;
    const Clock& clock_;
    Log& log_;
    Complaints complaints_;
};

} // namespace velmora
