// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "PrivateBus.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace velmora {

namespace {

constexpr auto addressVariable = "DBUS_SYSTEM_BUS_ADDRESS";

std::filesystem::path writeConfiguration(const std::filesystem::path& folder, std::string_view policy)
{
    const auto file = folder / "bus.conf";
    std::ofstream(file) << "<busconfig><type>system</type><listen>unix:path=" << (folder / "bus").string()
                        << "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow user=\"*\"/>"
                        << "<allow own=\"*\"/><allow send_destination=\"*\"/><allow send_type=\"signal\"/>"
                        << "<allow receive_sender=\"*\"/>" << policy << "</policy></busconfig>\n";
    return file;
}

} // namespace

PrivateBus::PrivateBus(std::string_view policy)
{
    const auto& folder = folder_.path();
    std::filesystem::permissions(folder, std::filesystem::perms{0755}); // other users connect too
    // With --fork the command ends once the bus listens. What it grumbles about goes to a file.
    const auto command = "dbus-daemon --fork --nopidfile --print-address=1 --print-pid=1 --config-file=" +
                         writeConfiguration(folder, policy).string() + " 2>" + (folder / "log").string();
    FILE* const output = popen(command.c_str(), "re");
    char address[256]{};
    const bool started = output && std::fscanf(output, "%255s %d", address, &process_) == 2;
    if (output) pclose(output);
    if (!started) throw std::runtime_error("dbus-daemon did not start, see " + folder.string());
    address_ = address;
    setenv(addressVariable, address, 1);
}

PrivateBus::~PrivateBus()
{
    stop();
    unsetenv(addressVariable);
}

void PrivateBus::stop()
{
    if (process_ > 0) kill(process_, SIGTERM);
    process_ = -1;
}

} // namespace velmora
