// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QColor>
#include <QQuickImageProvider>

namespace velmora {

/// The symbol `name`, `side` pixels square, filled from the top left corner's colour to the bottom right
/// one's. Null for an unknown name.
[[nodiscard]] QImage symbolImage(const QString& name, int side, const QColor& from, const QColor& to);

/// Draws symbols for `Image`: image://symbol/NAME/ARGB, or NAME/ARGB/ARGB for a gradient.
class SymbolProvider : public QQuickImageProvider {
public:
    SymbolProvider() : QQuickImageProvider(Image) {}

    /// The larger side of `requested` counts; without one it is 16. What is unknown gives a transparent image
    /// and one log line.
    QImage requestImage(const QString& id, QSize* size, const QSize& requested) override;
};

} // namespace velmora
