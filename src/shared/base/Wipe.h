// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace velmora {

/// Overwrites a secret that is needed no more, and empties the text. Copies made elsewhere stay.
inline void wipe(std::string& text) noexcept
{
    // A compiler may leave out writes to memory that is about to go, unless they are volatile.
    volatile char* const bytes = text.data();
    for (std::size_t i = 0; i < text.size(); ++i) bytes[i] = '\0';
    text.clear();
}

/// A copy that is wiped once nobody holds it any more.
inline std::shared_ptr<const std::string> guarded(const std::string& secret)
{
    return {new std::string(secret), [](std::string* kept) {
                wipe(*kept);
                delete kept;
            }};
}

} // namespace velmora
