// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/postgresql/ServerFailure.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace velmora::postgresql {

namespace {

constexpr std::size_t mostText = 300; // bytes

struct Row {
    std::string_view part;
    RecordFault fault;
};

// What libpq itself says; the first that fits counts.
constexpr std::array messages{
    Row{"channel binding", RecordFault::channelBinding},
    Row{"server signature", RecordFault::channelBinding}, // it does not know the password
    Row{"does not support SSL", RecordFault::noEncryption},
    Row{"certificate", RecordFault::certificate},
    Row{"Connection refused", RecordFault::noServer},
    Row{"No space left", RecordFault::full},
    Row{"No route to host", RecordFault::unreachable},
    Row{"unreachable", RecordFault::unreachable},
    Row{"timed out", RecordFault::unreachable},
    Row{"closed the connection", RecordFault::unreachable},
    Row{"Connection reset", RecordFault::unreachable},
    Row{"Broken pipe", RecordFault::unreachable},
    Row{"EOF detected", RecordFault::unreachable},
    Row{"unexpected eof", RecordFault::unreachable},
    Row{"no password supplied", RecordFault::noPassword},
};

// SQLSTATE or the class that it begins with.
constexpr std::array states{
    Row{"28P01", RecordFault::password},       Row{"28", RecordFault::noRights},
    Row{"42501", RecordFault::noRights},       Row{"3D000", RecordFault::noDatabase},
    Row{"3F000", RecordFault::noTable},        Row{"42P01", RecordFault::noTable},
    Row{"42703", RecordFault::noTable}, // a table of that name, and not Velmora's
    Row{"53300", RecordFault::tooManyClients}, Row{"53100", RecordFault::full},
    Row{"57P", RecordFault::unreachable}, // it ends, or is not ready yet
    Row{"08", RecordFault::unreachable},       Row{"57014", RecordFault::slow},
    Row{"55P03", RecordFault::slow},
};

/// The SQLSTATE in "ERROR:  42P01: relation ...".
std::string stateIn(std::string_view message)
{
    constexpr std::size_t length = 5;
    const auto mark = message.find(":  ");
    if (mark == message.npos) return {};
    const auto rest = message.substr(mark + 3);
    const auto state = rest.substr(0, length);
    const bool isState = std::ranges::all_of(state, [](unsigned char c) { return isdigit(c) || isupper(c); });
    return rest.size() > length && rest[length] == ':' && isState ? std::string(state) : std::string();
}

template <typename Rows, typename Fits>
RecordFault found(const Rows& rows, Fits fits)
{
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const Row& one) { return fits(one.part); });
    return row == rows.end() ? RecordFault::other : row->fault;
}

} // namespace

ServerFailure failureOf(std::string_view message)
{
    const auto line = message.substr(0, std::min(message.find('\n'), mostText));
    auto state = stateIn(line);
    const auto told = found(messages, [&](auto part) { return line.find(part) != line.npos; });
    const bool isOfServer = !state.empty() && told != RecordFault::channelBinding;
    const auto fault = isOfServer ? found(states, [&](auto part) { return state.starts_with(part); }) : told;
    return {fault, line.empty() ? "the connection was lost" : printable(line), std::move(state)};
}

} // namespace velmora::postgresql
