// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace velmora {

using Pixel = std::uint32_t; ///< 0xAARRGGBB, not premultiplied

/// What an item looks like: rows of pixels from the top left.
struct TrayPicture {
    int width = 0, height = 0; ///< zero where there is none
    std::vector<Pixel> pixels;

    /// A picture as it comes over the bus, four bytes a pixel in network order. Nothing where the bytes do
    /// not fit the size, and where a side exceeds 256 pixels.
    static std::optional<TrayPicture> decode(int width, int height, std::span<const std::byte> bytes);

    /// For an item that offers none that can be shown.
    static TrayPicture standIn(int size);
};

/// Whether `offer` looks better in a square of `size` than `best`: the smallest picture that fills the
/// square does, or else the largest.
bool isBetter(const TrayPicture& offer, const TrayPicture& best, int size);

/// A square of `size` over `background`: the picture in its middle, made smaller where it does not fit.
std::vector<Pixel> composed(const TrayPicture& picture, int size, Pixel background);

} // namespace velmora
