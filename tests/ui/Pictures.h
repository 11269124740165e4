// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QImage>
#include <QRect>
#include <QString>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

namespace velmora {

/// Half as large, as pictures are kept: it evens out how the edges of type are drawn.
QImage reduced(const QImage& picture);

/// The squares in which one has something that the other has not, of two pictures of a size. Another font
/// library's edges pass, and what is moved by a pixel; another colour, a symbol more or less, and what is
/// moved by four pixels of the unreduced picture do not.
std::vector<QRect> differences(const QImage& one, const QImage& other);

/// Compares with the picture kept under `name`. Where they differ, the picture is left with frames around
/// the places, which `part` may know names for; with VELMORA_RENEW_PICTURES in the environment it is kept
/// from now on.
testing::AssertionResult looksAsKept(
    const QImage& picture, const QString& name,
    const std::function<QString(QRect)>& part = [](QRect) { return QString(); });

} // namespace velmora
