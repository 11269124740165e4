// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Log.h"

namespace velmora {

/// The core's log by way of Qt's, which adds what Qt itself has to say: standard error, a line each, as the
/// journal reads it. Any thread.
class QtLog final : public Log {
public:
    /// Gives all lines of this process that form. Once, first thing in the program.
    static void setUp();

    void write(LogLevel level, std::string_view category, std::string_view text) override;
};

} // namespace velmora
