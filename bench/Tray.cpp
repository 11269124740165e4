// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Tray.h"

#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <thread>

namespace velmora {

using namespace std::chrono_literals;

namespace {

constexpr auto itemLine = "item at ";

/// A tray and nothing else.
std::filesystem::path writePanel(const std::filesystem::path& folder)
{
    auto file = folder / "tint2rc";
    std::ofstream(file)
        << "panel_items = S\npanel_size = 100% 28\npanel_position = bottom center horizontal\n";
    return file;
}

Program hostOf(const std::string& bin)
{
    return {.title = "velmora-trayhost", .path = bin + "/velmora-trayhost"};
}

Program panelOf(const std::filesystem::path& folder)
{
    return {.title = "tint2", .path = "/usr/bin/tint2", .arguments = {"-c", writePanel(folder)}};
}

} // namespace

Tray::Tray(const std::string& bin, const std::filesystem::path& folder)
    : said_(folder / "velmora-trayhost.log"),
      host_(hostOf(bin), said_),
      windows_(panelOf(folder), folder / "tint2.log"),
      lines_(said_)
{
    if (!await("ready", 10s)) throw std::runtime_error("no tray, see " + said_.string());
}

std::optional<Spot> Tray::awaitItem(Nanoseconds patience)
{
    Spot spot{};
    if (!await(itemLine, patience) || std::sscanf(latest_.c_str(), "item at %d,%d", &spot.x, &spot.y) != 2)
        return std::nullopt;
    return spot;
}

bool Tray::awaitNone(Nanoseconds patience)
{
    return latest_ == "ready" || await("no item", patience);
}

bool Tray::await(const std::string& start, Nanoseconds patience)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!latest().starts_with(start)) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(200us);
    }
    return true;
}

/// Its last line so far about who is there.
const std::string& Tray::latest()
{
    lines_.clear();
    for (std::string line; std::getline(lines_, line);)
        if (!line.starts_with("tooltip")) latest_ = line;
    return latest_;
}

} // namespace velmora
