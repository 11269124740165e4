// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <optional>
#include <string>

namespace velmora {

/// Asks for a password on the terminal that the program was started from, which does not show what is typed;
/// not on standard input, which may be a file. Waits for the person; nobody else may use the terminal
/// meanwhile, and the program must not have other threads that take signals.
///
/// Nothing where there is no terminal, or at the end of input. A signal that ends or stops the program does
/// so once the terminal shows again what is typed. Whoever has the text wipes it.
std::optional<std::string> askSecret(const std::string& prompt);

} // namespace velmora
