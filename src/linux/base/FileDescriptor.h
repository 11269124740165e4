// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Descriptor.h"

#include <unistd.h>

namespace velmora {

using FileDescriptor = Descriptor<::close>;

} // namespace velmora
