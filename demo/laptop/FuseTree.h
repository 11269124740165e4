// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "LaptopTree.h"
#include "base/FileDescriptor.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

struct fuse;
struct fuse_operations;

namespace velmora {

/// A laptop's files as a mounted file system: every read is fresh, a refused write fails with the driver's
/// errno, a file that the machine could not read fails as it did there.
///
/// With plain file modes (the kernel checks them), and for other users too where root mounts it.
class FuseTree final : public LaptopTree {
public:
    /// Null where nothing can be mounted; `whyNot` then says what the library said.
    static std::unique_ptr<FuseTree> mount(SharedLaptop& laptop, const TreeOptions& options,
                                           std::string& whyNot);

    /// Lets held writes go, unmounts, even while somebody is in there.
    ~FuseTree() override;
    FuseTree(const FuseTree&) = delete;
    FuseTree& operator=(const FuseTree&) = delete;

    void refresh() override {}
    void announce(const std::string& supply) override;
    std::string_view description() const override { return "a mounted file system"; }

    /// Whether `folder` is a mount whose program has died: nothing in it can be reached, not even the folder
    /// itself.
    static bool isDead(const std::filesystem::path& folder);
    /// Takes such a mount away. Whether the folder can be reached now.
    static bool clearDead(const std::filesystem::path& folder);

private:
    struct Calls; // the file system's operations, called on our servers

    FuseTree(SharedLaptop& laptop, const TreeOptions& options);
    void start();
    void serve();
    void announceAll();
    void holdWrite();

    SharedLaptop& laptop_;
    std::filesystem::path folder_;
    std::chrono::milliseconds heldWrite_;
    std::map<std::string, std::set<std::string>, std::less<>>
        folders_; // entries by folder; fixed, so without a lock

    fuse* fuse_ = nullptr;
    FileDescriptor ending_;
    std::vector<std::thread> servers_;
    std::thread announcer_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isEnding_ = false;
    std::deque<std::string> announcements_;
};

} // namespace velmora
