// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "LaptopTree.h"
#include "base/FileDescriptor.h"

#include <map>
#include <mutex>
#include <thread>

namespace velmora {

/// A laptop's files as plain ones, for where nothing can be mounted. They are replaced whole as they change,
/// so that no reader meets half a file.
///
/// Two things are not as on a real laptop. A write that the driver refuses succeeds, and the file is put back
/// milliseconds later; and every file that cannot be read fails with EIO, whatever the machine said (it is a
/// link to /proc/self/mem).
class PlainTree final : public LaptopTree {
public:
    /// Throws std::filesystem::filesystem_error or std::system_error where the files cannot be laid.
    PlainTree(SharedLaptop& laptop, const TreeOptions& options);

    /// Takes all files away.
    ~PlainTree() override;
    PlainTree(const PlainTree&) = delete;
    PlainTree& operator=(const PlainTree&) = delete;

    void refresh() override;
    void announce(const std::string& supply) override;
    std::string_view description() const override { return "plain files"; }

    /// Whether `folder` holds the files of such a tree and nothing else.
    static bool isOurs(const std::filesystem::path& folder);
    static void clear(const std::filesystem::path& folder);

private:
    void lay(const std::string& path);
    void watch(const std::string& path);
    void takeWrites();
    void takeWrite(const std::string& path);
    void replace(const std::string& path, const std::string& bytes);

    SharedLaptop& laptop_;
    std::filesystem::path folder_;
    FileDescriptor watcher_;
    FileDescriptor ending_;
    std::map<int, std::string> watched_;       // folder by watch; fixed once the thread runs
    std::mutex mutex_;                         // of what follows
    std::map<std::string, std::string> shown_; // bytes by path, of all files that can be read
    std::thread thread_;
};

} // namespace velmora
