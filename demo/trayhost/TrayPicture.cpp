// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "TrayPicture.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr int maximumSide = 256;
constexpr std::size_t bytesPerPixel = 4;

int sideOf(const TrayPicture& picture)
{
    return std::max(picture.width, picture.height);
}

Pixel blend(Pixel above, Pixel below)
{
    const Pixel alpha = above >> 24U;
    Pixel result = 0xff;
    for (const unsigned shift : {16U, 8U, 0U}) {
        const Pixel over = above >> shift & 0xffU;
        const Pixel under = below >> shift & 0xffU;
        result = result << 8U | (over * alpha + under * (255 - alpha) + 127) / 255;
    }
    return result;
}

} // namespace

std::optional<TrayPicture> TrayPicture::decode(int width, int height, std::span<const std::byte> bytes)
{
    if (std::min(width, height) < 1 || std::max(width, height) > maximumSide) return std::nullopt;
    TrayPicture picture{width, height, {}};
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (bytes.size() != count * bytesPerPixel) return std::nullopt;
    picture.pixels.reserve(count);
    for (; !bytes.empty(); bytes = bytes.subspan(bytesPerPixel)) {
        Pixel pixel = 0;
        for (const auto byte : bytes.first(bytesPerPixel)) pixel = pixel << 8U | std::to_integer<Pixel>(byte);
        picture.pixels.push_back(pixel);
    }
    return picture;
}

TrayPicture TrayPicture::standIn(int size)
{
    const auto side = static_cast<std::size_t>(size);
    return {size, size, std::vector<Pixel>(side * side, 0x80808080)};
}

bool isBetter(const TrayPicture& offer, const TrayPicture& best, int size)
{
    const bool isLarger = sideOf(offer) > sideOf(best);
    return sideOf(best) < size ? isLarger : sideOf(offer) >= size && !isLarger;
}

std::vector<Pixel> composed(const TrayPicture& picture, int size, Pixel background)
{
    const int side =
        std::max(sideOf(picture), size); // of the square that is made to fit, picture in its middle
    std::vector<Pixel> square;
    square.reserve(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const int column = x * side / size - (side - picture.width) / 2;
            const int row = y * side / size - (side - picture.height) / 2;
            const bool isInside = column >= 0 && column < picture.width && row >= 0 && row < picture.height;
            const int index = row * picture.width + column;
            square.push_back(
                blend(isInside ? picture.pixels[static_cast<std::size_t>(index)] : 0, background));
        }
    }
    return square;
}

} // namespace velmora
