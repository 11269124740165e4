// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Dunst.h"

#include <chrono>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace velmora {

bool Dunst::isInstalled()
{
    return std::system("command -v dunst dunstctl Xvfb >/dev/null") == 0;
}

Dunst::Dunst(std::string bus) : bus_(std::move(bus))
{
    using namespace std::chrono_literals;
    const auto path = [this](const char* name) { return (folder_.path() / name).string(); };
    folder_.write("display", "");
    folder_.write("x", "#!/bin/sh\nexec Xvfb -displayfd 3 -screen 0 800x600x24 -nolisten tcp 3>" +
                           path("number") + "\n");
    folder_.write("dunstrc", "[global]\nmarkup = full\n[urgency_low]\ntimeout = 0\n"
                             "[urgency_normal]\ntimeout = 0\n[urgency_critical]\ntimeout = 0\n");
    folder_.write("server", "#!/bin/sh\nexport DBUS_SESSION_BUS_ADDRESS=" + bus_ + " DISPLAY=:$(cat " +
                                path("number") + ")\nexec dunst -conf " + path("dunstrc") + " -print >>" +
                                path("shown") + "\n");
    for (const auto* script : {"x", "server"})
        std::filesystem::permissions(path(script), std::filesystem::perms{0700});
    display_.emplace(path("x"), Process::Environment{}, path("log"));
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (!folder_.read("number").ends_with('\n')) {
        if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("Xvfb did not start");
        std::this_thread::sleep_for(5ms);
    }
    start();
}

void Dunst::start()
{
    server_.emplace(program(), Process::Environment{}, folder_.path() / "log");
}

std::vector<Dunst::Shown> Dunst::shown() const
{
    std::vector<Shown> all;
    std::istringstream lines(folder_.read("shown"));
    const auto value = [](const std::string& line, const std::string& key) -> std::optional<std::string> {
        if (!line.starts_with("\t" + key + ": ")) return std::nullopt;
        auto rest = line.substr(key.size() + 3);
        return rest.starts_with('\'') ? rest.substr(1, rest.size() - 2) : rest;
    };
    for (std::string line; std::getline(lines, line);) {
        if (const auto name = value(line, "appname")) all.emplace_back().application = *name;
        if (all.empty()) continue;
        if (const auto title = value(line, "summary")) all.back().title = *title;
        if (const auto body = value(line, "body")) all.back().body = *body;
        if (const auto urgency = value(line, "urgency")) all.back().urgency = *urgency;
        if (const auto entry = value(line, "desktop_entry")) all.back().desktopEntry = *entry;
    }
    return all;
}

int Dunst::displayed() const
{
    if (run("count displayed >" + (folder_.path() / "count").string()) != 0) return -1;
    return std::atoi(folder_.read("count").c_str());
}

void Dunst::pause(bool isPaused) const
{
    run(isPaused ? "set-paused true" : "set-paused false");
}

void Dunst::click() const
{
    run("action");
}

int Dunst::run(const std::string& command) const
{
    return std::system(
        ("DBUS_SESSION_BUS_ADDRESS=" + bus_ + " timeout 20 dunstctl " + command + " 2>/dev/null").c_str());
}

} // namespace velmora
