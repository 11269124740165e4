// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace velmora {

/// A child of this process. Whoever made it reaps it.
struct Child {
    pid_t id = -1;
    FileDescriptor process; ///< of the child; readable once it has ended
};

/// Starts the program that the first argument names by its path, with no signal blocked: the main loop has
/// its own blocked, which a child must not inherit. Its standard output goes to `output`, where one is given;
/// of this process's descriptors it has the other two standard ones and no more.
/// Any thread. Throws std::system_error where there is no such program, or the system refuses.
Child spawn(std::vector<std::string> arguments, std::vector<std::string> environment, int output = -1);

/// This process's environment.
std::vector<std::string> currentEnvironment();

} // namespace velmora
