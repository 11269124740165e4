// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/DaemonLink.h"

namespace velmora::ctl {

/// Prints a line now and at every change that shows in it, until standard output is closed. A daemon that is
/// not there, or goes, is a line too: it is waited for. Asleep between changes.
ExitStatus watch(EventLoop& loop, DaemonLink& link, bool isJson);

} // namespace velmora::ctl
