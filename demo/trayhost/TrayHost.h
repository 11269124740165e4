// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "StatusNotifierWatcher.h"
#include "TrayBar.h"
#include "TrayItem.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

/// The tray of a display that has no desktop: shows the items that register with the watcher, and passes
/// clicks on to them. Loop's thread only.
class TrayHost {
public:
    /// `say` is given a line for each item, and where to click it, whenever an item came or went:
    /// "item at X,Y: ADDRESS", or "no item"; and "tooltip: TEXT" whenever an item's tooltip reads
    /// differently.
    TrayHost(StatusNotifierWatcher& watcher, sd_bus* bus, TrayBar& bar,
             std::function<void(const std::string&)> say);
    ~TrayHost();
    TrayHost(const TrayHost&) = delete;
    TrayHost& operator=(const TrayHost&) = delete;

private:
    void follow();
    void draw();
    void listen();
    void tell() const;
    void click(std::uint8_t button, int x, int y);

    StatusNotifierWatcher& watcher_;
    sd_bus* bus_;
    TrayBar& bar_;
    std::function<void(const std::string&)> say_;
    std::vector<std::unique_ptr<TrayItem>> items_; ///< as the watcher has them
    std::map<const TrayItem*, std::string> told_;  ///< the items' tooltips
};

} // namespace velmora
