// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <memory>

class QQmlEngine;
class QQuickWindow;

namespace velmora {

/// A window that shows each component of the views in the appearance that `engine` finds; it is not shown
/// yet. Each stands in an item "stage" of a cell that has the component's name as its object name, and its
/// state's where it has several. Throws std::runtime_error where a component cannot be made.
std::unique_ptr<QQuickWindow> makeGallery(QQmlEngine& engine, bool isAnimated);

} // namespace velmora
