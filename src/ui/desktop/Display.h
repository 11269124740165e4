// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// Whether the display that the environment names answers: without one Qt aborts the process. Always true
/// where QT_QPA_PLATFORM is set. Needs no QGuiApplication.
bool isDisplayThere();

} // namespace velmora
