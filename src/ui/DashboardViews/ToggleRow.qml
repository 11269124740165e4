// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// A setting that is on or off, and what it does.
PlainSwitch {
    id: row
    property alias title: row.text
    property alias subtitle: row.caption

    captionLines: 2
}
