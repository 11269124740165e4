// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <string>
#include <string_view>

namespace velmora::openid {

/// Has the libraries that handle tokens (libcurl, jansson) overwrite all memory that they give back. The
/// first call counts; it comes before either library is used.
void wipeLibraryMemory();

/// Adds to a text that may hold secrets: where it has to grow, what it leaves behind is overwritten.
void appendSecret(std::string& text, std::string_view more);

} // namespace velmora::openid
