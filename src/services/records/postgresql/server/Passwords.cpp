// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/postgresql/server/Passwords.h"

#include "base/SecretFile.h"
#include "base/TerminalSecret.h"
#include "base/Translation.h"
#include "base/Wipe.h"

#include <cstdio>
#include <stdexcept>
#include <utility>
#include <variant>

namespace velmora::postgresql {

namespace {

std::string askPassword(const std::string& question)
{
    while (true) {
        auto password = askSecret(question + " ");
        if (!password)
            throw std::runtime_error(tr("No password was given; for files that have one see --help."));
        if (!password->empty() && password->size() <= longestSecret) return *std::move(password);
        wipe(*password);
        std::fputs((tr("A password has 1 to %1 letters.", std::to_string(longestSecret)) + '\n').c_str(),
                   stderr);
    }
}

std::string askNewPassword(const std::string& question)
{
    while (true) {
        auto password = askPassword(question);
        auto again = askPassword(tr("Once more:"));
        const bool isSame = password == again;
        wipe(again);
        if (isSame) return password;
        wipe(password);
        std::fputs((tr("These are not the same.") + '\n').c_str(), stderr);
    }
}

} // namespace

std::string passwordFor(const std::filesystem::path& file, const std::string& question, bool isNew)
{
    if (file.empty()) return isNew ? askNewPassword(question) : askPassword(question);
    auto found = secretIn(file);
    if (auto* password = std::get_if<std::string>(&found)) return std::move(*password);
    throw std::runtime_error(
        tr("The password is not taken from %1: %2.", file.string(), std::get<NoSecret>(found).why));
}

} // namespace velmora::postgresql
