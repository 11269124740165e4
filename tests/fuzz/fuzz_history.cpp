// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "history/HistoryCodec.h"

#include <cstdint>
#include <cstdlib>

/// Whatever a history file holds, reading it ends, and what was read survives being written and read again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto samples = velmora::decodeHistory({reinterpret_cast<const char*>(bytes), size});
    if (samples && velmora::decodeHistory(velmora::encodeHistory(*samples)) != samples) std::abort();
    return 0;
}
