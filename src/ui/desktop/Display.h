// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// Whether a display answers at the place that the environment names: Qt aborts the process where none does.
/// True without a question where QT_QPA_PLATFORM asks for something of its own. Needs no QGuiApplication.
bool isDisplayThere();

} // namespace velmora
