// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/Platform.h"

#include <stdexcept>
#include <utility>

namespace velmora {

namespace {
Platform* installed = nullptr;
}

Platform& Platform::current()
{
    if (!installed) throw std::logic_error("no Platform is installed");
    return *installed;
}

std::shared_ptr<void> Platform::install(Platform& platform)
{
    Platform* const before = std::exchange(installed, &platform);
    return {nullptr, [before](void*) { installed = before; }};
}

} // namespace velmora
