// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "VersionNoticeObject.h"

namespace velmora {

namespace wired = wire::face::notice;

VersionNoticeObject::VersionNoticeObject(MainLoop& loop, sd_bus* bus, VersionNotice& notice)
    : face_(loop, bus, wired::objectPath, wired::interface, wired::properties)
{
    face_.bind("hasSeenMacOS264Banner", notice.hasSeenMacOS264Banner);
    face_.bind(wired::showMacOS264Banner, notice.showMacOS264Banner);
    face_.addOperation(wired::appeared, [&notice] { notice.appeared(); });
    face_.addOperation(wired::dismissed, [&notice] { notice.dismissed(); });
    face_.serve();
}

} // namespace velmora
