// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "WidgetObject.h"

namespace velmora {

namespace wired = wire::face::widget;

WidgetObject::WidgetObject(MainLoop& loop, sd_bus* bus, const char* path, WidgetSettings& settings)
    : face_(loop, bus, path, wired::interface, wired::properties)
{
    face_.bind("isPinned", settings.isPinned);
    face_.bind("isShownAtLogIn", settings.isShownAtLogIn);
    face_.bind("place", settings.place);
    face_.serve();
}

} // namespace velmora
