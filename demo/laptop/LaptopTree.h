// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "SharedLaptop.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace velmora {

/// The files of a laptop, shown below a folder as sysfs would show them. They go with this object.
class LaptopTree {
public:
    virtual ~LaptopTree() = default;

    /// The laptop may read differently now.
    virtual void refresh() = 0;

    /// Rewrites `class/power_supply/SUPPLY/uevent`, so that inotify tells readers about it. Returns at once.
    virtual void announce(const std::string& supply) = 0;

    /// How the files are shown, in a few words.
    virtual std::string_view description() const = 0;
};

/// How a tree is to be shown.
struct TreeOptions {
    std::filesystem::path folder; ///< made where it is missing
    bool isPlain = false;         ///< plain files even where a file system could be mounted
    /// How long a write to a threshold waits for the firmware. Plain files cannot make it wait.
    std::chrono::milliseconds heldWrite{0};
};

/// Mounts a file system of our own, or lays plain files where that cannot be done; `note` then says why. What
/// an earlier run left in the folder when it was killed is cleared away first. Throws std::runtime_error,
/// with a sentence, where the folder cannot be used or holds anything else.
std::unique_ptr<LaptopTree> showTree(SharedLaptop& laptop, const TreeOptions& options, std::string& note);

} // namespace velmora
