// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What those who read the command line have in common.
namespace velmora::ctl {

/// What is wrong with the command line, as a sentence. It never leaves `parse`.
struct Fault {
    std::string text;
};

/// A whole number within the bounds; a percent sign may follow it.
std::optional<double> number(std::string_view text, double lowest, double highest);

std::string whole(double value);

/// A word of the command line as part of a sentence.
std::string shown(std::string_view word);

/// True for the word "on", false for "off"; throws a Fault for any other. `command` is the command that was
/// given the word, for the text of the Fault.
bool onOff(std::string_view command, std::string_view word);

/// A path that means the same to a program in another folder, as velmora is.
std::string absolutePath(std::string_view path);

} // namespace velmora::ctl
