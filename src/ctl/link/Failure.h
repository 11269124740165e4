// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace velmora::ctl {

/// What velmoractl ends with. Scripts rely on the numbers: they stay.
enum class ExitStatus : std::uint8_t {
    done = 0,
    failed = 1,   ///< refused, or something went wrong
    usage = 2,    ///< the command line cannot be understood
    noDaemon = 3, ///< the daemon is not running, or does not answer
    unable = 4,   ///< there is no battery, or its charger cannot do this
};

/// Why a command ends before it is done; the text is for a person, in the reader's language.
struct Failure : std::runtime_error {
    Failure(ExitStatus with, const std::string& text, std::string whatToDo = "")
        : std::runtime_error(text), status(with), advice(std::move(whatToDo))
    {
    }

    /// For the person who asked.
    std::string told() const { return advice.empty() ? what() : what() + (' ' + advice); }

    ExitStatus status;
    std::string advice; ///< may name the person, which `what` never does
};

} // namespace velmora::ctl
