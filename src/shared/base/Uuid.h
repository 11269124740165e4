// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <string>

namespace velmora {

/// A fresh random identifier (version 4 of RFC 9562) in its canonical text form, 36 characters, upper case.
/// Any thread. Throws std::system_error where the machine gives no random numbers.
std::string makeUuid();

} // namespace velmora
