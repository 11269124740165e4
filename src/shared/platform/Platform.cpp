// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/Platform.h"

#include <cassert>
#include <utility>

namespace velmora {

namespace {
Platform* installed = nullptr;
}

Platform& Platform::current()
{
    assert(installed && "main installs a Platform first");
    return *installed;
}

std::shared_ptr<void> Platform::install(Platform& platform)
{
    Platform* const before = std::exchange(installed, &platform);
    return {nullptr, [before](void*) { installed = before; }};
}

} // namespace velmora
