// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick

/// A gradient from the top left corner to the bottom right one.
QtObject {
    required property color from
    required property color to
}
