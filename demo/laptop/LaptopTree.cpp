// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopTree.h"

#include "FuseTree.h"
#include "PlainTree.h"

#include <stdexcept>

namespace velmora {

namespace fs = std::filesystem;

namespace {

/// Leaves an empty folder, or throws.
void prepare(const fs::path& folder)
{
    if (FuseTree::isDead(folder) && !FuseTree::clearDead(folder)) {
        throw std::runtime_error(folder.string() + " is still mounted and cannot be unmounted");
    }
    std::error_code error;
    fs::create_directories(folder, error);
    if (PlainTree::isOurs(folder)) PlainTree::clear(folder);
    const bool isEmpty = fs::is_empty(folder, error);
    if (error) throw std::runtime_error(folder.string() + ": " + error.message());
    if (!isEmpty) throw std::runtime_error(folder.string() + " is not empty; choose a folder of its own");
}

} // namespace

std::unique_ptr<LaptopTree> showTree(SharedLaptop& laptop, const TreeOptions& options, std::string& note)
{
    prepare(options.folder);
    if (!options.isPlain) {
        if (auto tree = FuseTree::mount(laptop, options, note)) return tree;
    }
    return std::make_unique<PlainTree>(laptop, options);
}

} // namespace velmora
