// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QMargins>
#include <Qt>

class QWindow;

/// Layer-shell: what lets a Wayland window be at a place of its screen, above or below all others and in no
/// taskbar. A build without LayerShellQt for Qt 6 is never offered it. What is changed of a window that is
/// shown becomes true with the next frame that it draws. Main thread only.
namespace velmora::layers {

/// The compositor that the environment names offers it. Connects for that, and waits for the answer.
bool areOffered();

/// Panel and widgets are to be layer surfaces from now on. Before the first one is made.
void use();
bool areUsed();

/// At which edges of its screen a surface lies, and as far from each as the margins say, within what bars
/// leave of it.
struct Place {
    Qt::Edges edges;
    QMargins margins;

    bool operator==(const Place&) const = default;
};

/// Makes the window a layer surface there, or moves one that is. It gets the keyboard by a click.
void put(QWindow& window, const Place& place);

/// Above all windows, or below them.
void setAbove(QWindow& window, bool isAbove);

/// Gives it the keyboard as soon as it is shown, and leaves it to the next window that is clicked. What a
/// click on the empty desktop does is the compositor's choice: KWin takes the keyboard away, sway does not.
void takeKeyboard(QWindow& window);

} // namespace velmora::layers
