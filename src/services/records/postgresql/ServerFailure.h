// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/CloudDatabase.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace velmora::postgresql {

/// Why a server did not do what it was asked for. The text is one line for the log, the same for the same
/// cause.
class ServerFailure : public std::runtime_error {
public:
    ServerFailure(RecordFault why, const std::string& text, std::string sqlState = {})
        : std::runtime_error(text), fault(why), state(std::move(sqlState))
    {
    }

    RecordFault fault;
    std::string state; ///< SQLSTATE; empty where it is no answer of the server's
};

/// What libpq says of a failure, at PQERRORS_VERBOSE and in English. It may come from a server that has not
/// proved who it is: it is shortened, and cleaned of what is no text.
ServerFailure failureOf(std::string_view message);

} // namespace velmora::postgresql
