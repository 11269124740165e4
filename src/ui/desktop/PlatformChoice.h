// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <string>

namespace velmora {

/// What there is to show windows on. A question is asked only where its answer matters: one to X starts an
/// XWayland that waits for its first client.
struct DisplayFacts {
    QStringList wanted;    ///< of QT_QPA_PLATFORM, the first one first
    QStringList installed; ///< Qt's platform plugins: "xcb", "wayland", "offscreen" ...
    std::function<bool()> doesWaylandAnswer;
    std::function<bool()> doesXAnswer;
    /// This build knows layer-shell, and the compositor offers it.
    std::function<bool()> hasLayers;
};

struct PlatformChoice {
    QString platform;    ///< of Qt's; empty: there is none that works, and Qt would abort the process
    bool layers = false; ///< panel and widgets are layer surfaces, which know their place
    std::string reason;  ///< a sentence for the log; without a platform, what there is not
};

/// Where windows are shown. What QT_QPA_PLATFORM wants comes first, as far as it works. Then Wayland with
/// layer-shell, since there alone a Wayland window can be placed; then X, since XWayland places windows too;
/// then ordinary Wayland windows, which the compositor puts where it likes.
PlatformChoice choosePlatform(const DisplayFacts& facts);

} // namespace velmora
