// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Pictures.h"

#include <QDir>
#include <QPainter>
#include <algorithm>

namespace velmora {

namespace {

constexpr int reduction = 2;
constexpr int square = 16;           // side, reduced
constexpr int harmless = 6;          // pixels of a square that may differ
constexpr QRgb telling = 0xfffcfcfc; // bits of a pixel; the others only make files larger
constexpr int colors = 3;            // bytes of a pixel; the fourth is not used

// By how much a pixel may lie outside of what the pixels around its place have in the other picture.
constexpr int tolerance = 8;     // of 255
constexpr int toleratedEdge = 4; // and this part of the contrast there

const uchar* at(const QImage& image, int x, int y)
{
    return image.constScanLine(y) + 4 * x;
}

/// Whether `image` has about this color at the place or right beside it.
bool hasNearby(const QImage& image, int x, int y, const uchar* wanted)
{
    for (int color = 0; color < colors; ++color) {
        int lowest = 255;
        int highest = 0;
        for (int row = std::max(y - 1, 0); row <= std::min(y + 1, image.height() - 1); ++row) {
            for (int column = std::max(x - 1, 0); column <= std::min(x + 1, image.width() - 1); ++column) {
                lowest = std::min<int>(lowest, at(image, column, row)[color]);
                highest = std::max<int>(highest, at(image, column, row)[color]);
            }
        }
        const int margin = tolerance + (highest - lowest) / toleratedEdge;
        if (wanted[color] < lowest - margin || wanted[color] > highest + margin) return false;
    }
    return true;
}

bool differ(const QImage& one, const QImage& other, QRect box)
{
    int count = 0;
    for (int y = box.top(); y <= box.bottom(); ++y)
        for (int x = box.left(); x <= box.right(); ++x)
            count += !hasNearby(other, x, y, at(one, x, y)) || !hasNearby(one, x, y, at(other, x, y));
    return count > harmless;
}

QRect unreduced(QRect box)
{
    return {box.topLeft() * reduction, box.size() * reduction};
}

/// Where somebody can look at it.
QString leave(QImage picture, const QString& name, const std::vector<QRect>& places)
{
    QPainter painter(&picture);
    painter.setPen(QPen(Qt::magenta, 2));
    for (const auto& place : places) painter.drawRect(unreduced(place));
    painter.end();
    const QDir folder(QDir::temp().filePath("velmora-pictures"));
    folder.mkpath(".");
    const auto file = folder.filePath(name + ".png");
    return picture.save(file) ? file : "nowhere: cannot write " + file;
}

/// A quarter of it goes to each of the two neighbours.
QImage blurred(const QImage& picture, QPoint step)
{
    auto result = picture;
    QPainter painter(&result);
    painter.setOpacity(1 / 3.0);
    painter.drawImage(-step, picture);
    painter.setOpacity(1 / 4.0);
    painter.drawImage(step, picture);
    return result;
}

} // namespace

QImage reduced(const QImage& picture)
{
    // Blurred, or a line as thin as a pixel would look another way at even places than at odd ones.
    auto image = blurred(blurred(picture.convertToFormat(QImage::Format_RGB32), {1, 0}), {0, 1})
                     .scaled(picture.size() / reduction, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) image.setPixel(x, y, image.pixel(x, y) & telling);
    return image;
}

std::vector<QRect> differences(const QImage& one, const QImage& other)
{
    std::vector<QRect> found;
    for (int y = 0; y < one.height(); y += square)
        for (int x = 0; x < one.width(); x += square)
            if (const auto box = QRect(x, y, square, square) & one.rect(); differ(one, other, box))
                found.push_back(box);
    return found;
}

testing::AssertionResult looksAsKept(const QImage& picture, const QString& name,
                                     const std::function<QString(QRect)>& part)
{
    const auto file = QStringLiteral(VELMORA_UI_TESTS "/pictures/%1.png").arg(name);
    const auto kept = QImage(file).convertToFormat(QImage::Format_RGB32);
    const auto now = reduced(picture);
    const bool isComparable = kept.size() == now.size();
    const auto places = isComparable ? differences(now, kept) : std::vector<QRect>{};
    if (isComparable && places.empty()) return testing::AssertionSuccess();
    if (qEnvironmentVariableIsSet("VELMORA_RENEW_PICTURES") && now.save(file, "PNG", 0))
        return testing::AssertionSuccess();
    auto failure = testing::AssertionFailure();
    failure << qUtf8Printable(name) << " is not as it was; see "
            << qUtf8Printable(leave(picture, name, places));
    if (!isComparable)
        failure << "\n  the kept one is " << kept.width() * reduction << " x " << kept.height() * reduction;
    for (const auto& place : places) {
        const auto box = unreduced(place);
        failure << "\n  at " << box.x() << ',' << box.y() << ' ' << qUtf8Printable(part(box));
    }
    return failure;
}

} // namespace velmora
