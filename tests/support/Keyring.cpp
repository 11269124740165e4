// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Keyring.h"

#include <cstdlib>
#include <utility>

namespace velmora {

bool Keyring::isInstalled()
{
    return std::system("command -v gnome-keyring-daemon secret-tool >/dev/null") == 0;
}

Keyring::Keyring(std::string bus) : bus_(std::move(bus))
{
    const auto script = folder_.path() / "server";
    folder_.write("password", "\n");
    folder_.write("server",
                  "#!/bin/sh\nexec gnome-keyring-daemon --unlock --components=secrets --foreground <" +
                      (folder_.path() / "password").string() + " >/dev/null\n");
    std::filesystem::permissions(script, std::filesystem::perms{0700});
    start();
}

void Keyring::start()
{
    const std::string home = folder_.path();
    daemon_.emplace(folder_.path() / "server",
                    Process::Environment{{"DBUS_SESSION_BUS_ADDRESS", bus_},
                                         {"HOME", home},
                                         {"XDG_DATA_HOME", home},
                                         {"XDG_RUNTIME_DIR", home},
                                         {"DISPLAY", ""}},
                    folder_.path() / "log");
}

void Keyring::lock() const
{
    run("busctl --address=" + bus_ +
        " call org.freedesktop.secrets /org/freedesktop/secrets org.freedesktop.Secret.Service Lock ao 1 "
        "/org/freedesktop/secrets/collection/login");
}

std::string Keyring::lookUp(const std::string& service, const std::string& account) const
{
    return run("secret-tool lookup service '" + service + "' account '" + account + "'");
}

void Keyring::put(const std::string& service, const std::string& account, const std::string& secret) const
{
    run("printf %s '" + secret + "' | secret-tool store --label=other service '" + service + "' account '" +
        account + "'");
}

/// What it prints; ended after a while where it asks the user for something.
std::string Keyring::run(const std::string& command) const
{
    const auto output = folder_.path() / "output";
    const auto whole = "export DBUS_SESSION_BUS_ADDRESS=" + bus_ + " DISPLAY=; exec >" + output.string() +
                       " 2>&1; timeout 20 sh -c \"" + command + "\"";
    if (std::system(whole.c_str()) != 0) return {};
    return folder_.read("output");
}

} // namespace velmora
