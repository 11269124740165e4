// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// Removes the variables PG... from this process's environment: libpq would take from them what a place does
/// not name, and connect elsewhere or otherwise than a person chose. To be called by `main`, before other
/// threads start.
void forgetServerVariables();

} // namespace velmora
