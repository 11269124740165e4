// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// The version of the running system; 0.0 where it is unknown.
struct SystemVersion {
    int major = 0;
    int minor = 0;

    friend bool operator==(const SystemVersion&, const SystemVersion&) = default;
};

} // namespace velmora
