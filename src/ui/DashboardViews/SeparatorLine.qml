// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

Rectangle {
    implicitWidth: 40
    implicitHeight: 1
    color: Theme.faded(Theme.colors.separator, 0.3)
}
