// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/CoreDumps.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "base/Version.h"
#include "base/Wipe.h"
#include "records/ServerVariables.h"
#include "records/postgresql/server/Options.h"
#include "records/postgresql/server/Passwords.h"
#include "records/postgresql/server/Setup.h"

#include <cstddef>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <variant>

namespace {

using namespace velmora;
using namespace velmora::postgresql;

void print(const std::string& text)
{
    std::fputs(text.c_str(), stdout);
}

void add(Administrator& administrator, const Request& request)
{
    auto server = administrator.connect();
    isPerson(server, request.person); // so that nobody is asked for a password in vain
    auto password = passwordFor(request.passwordFile, tr("New password of %1:", request.person), true);
    try {
        addPerson(administrator, request.person, password);
    } catch (...) {
        wipe(password);
        throw;
    }
    wipe(password);
    print(tr("%1 may keep records there now.", request.person) + '\n');
}

/// Whether it is done, and all is right.
bool run(const Request& request)
{
    Administrator administrator(request);
    if (request.command == Request::Command::add) {
        add(administrator, request);
        return true;
    }
    if (request.command == Request::Command::remove) {
        removePerson(administrator, request.person);
        print(tr("%1 and the records are gone.", request.person) + '\n');
        return true;
    }
    if (request.command == Request::Command::setup) setUp(administrator, request);
    auto server = administrator.connect();
    return check(server, request.place.database);
}

/// By the socket a server mostly asks the system who somebody is.
std::string advice(const Request& request, const ServerFailure& failure)
{
    const auto& place = request.place;
    if (!place.host.starts_with('/') || !failure.state.starts_with("28")) return {};
    return ". " + tr("Try it as that user of the system: sudo -u %1 velmora-fleet-server ...", place.user);
}

int fail(const std::string& text, int status)
{
    std::fprintf(stderr, "velmora-fleet-server: %s\n", printable(text).c_str());
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    forbidCoreDumps();
    forgetServerVariables();
    const auto parsed = parse({argv + 1, argv + (argc > 1 ? argc : 1)});
    const auto* request = std::get_if<Request>(&parsed);
    if (!request) return fail(tr("%1 See velmora-fleet-server --help.", std::get<std::string>(parsed)), 2);
    if (request->command == Request::Command::help) return print(usage()), 0;
    if (request->command == Request::Command::version) return print(versionLine("velmora-fleet-server")), 0;
    try {
        return run(*request) && std::fflush(stdout) == 0 ? 0 : 1;
    } catch (const ServerFailure& failure) {
        return fail(tr("The server does not do that: %1", failure.what() + advice(*request, failure)), 1);
    } catch (const std::exception& failure) {
        return fail(failure.what(), 1);
    }
}
