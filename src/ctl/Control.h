// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora::ctl {

/// The whole program: does what the command line asks for, prints what came of it, and returns an ExitStatus
/// for the shell.
int runControl(int argc, const char* const* argv);

} // namespace velmora::ctl
