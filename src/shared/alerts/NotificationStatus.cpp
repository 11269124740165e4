// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "alerts/NotificationStatus.h"

#include "base/Translation.h"
#include "platform/Platform.h"

namespace velmora {

NotificationStatus::NotificationStatus() : center_(Platform::current().notificationCenter)
{
    changes_ = center_->observeServer([this] { look(); });
    look();
}

void NotificationStatus::look()
{
    const auto now = center_->server();
    server.set(now.name);
    isServerStartable.set(now.isStartable);
    isInhibited.set(now.isInhibited.value_or(false));
}

void NotificationStatus::sendTestNotice()
{
    testResult.set(std::nullopt);
    const auto told = lifetime_.guard(
        [this](const std::optional<std::string>& error) { testResult.set(error.value_or("")); });
    center_->add(
        {.identifier = testIdentifier, .title = "Velmora", .body = tr("This is how Velmora's notices look.")},
        [told, loop = Platform::current().mainLoop](const auto& error) {
            loop->post([told, error] { told(error); });
        });
}

} // namespace velmora
