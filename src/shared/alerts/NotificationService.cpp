// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "alerts/NotificationService.h"

#include "alerts/DeliveredNotices.h"
#include "platform/Platform.h"

#include <utility>

namespace velmora {

namespace {
constexpr auto category = "NotificationService";
} // namespace

NotificationService& NotificationService::shared()
{
    return Platform::current().singleton<NotificationService>();
}

NotificationService::NotificationService()
    : center_(Platform::current().notificationCenter),
      log_(Platform::current().log),
      loop_(Platform::current().mainLoop)
{
}

void NotificationService::requestPermissions()
{
    center_->requestAuthorization([log = log_](bool isGranted, const auto& error) {
        if (isGranted)
            log->info(category, "Notification permission granted.");
        else if (error)
            log->error(category, "Notification permission error: " + *error);
    });
}

void NotificationService::scheduleNotification(std::string title, std::string body, std::string identifier)
{
    NotificationRequest request{.identifier = identifier, .title = std::move(title), .body = std::move(body)};
    center_->add(std::move(request), [log = log_, loop = loop_,
                                      identifier = std::move(identifier)](const auto& error) {
        if (error)
            return log->error(category, "Error scheduling notification '" + identifier + "': " + *error);
        loop->post([identifier] { DeliveredNotices::shared().note(identifier); });
    });
}

void NotificationService::removeNotifications(const std::vector<std::string>& identifiers)
{
    if (identifiers.empty()) return;
    center_->removePending(identifiers);
    center_->removeDelivered(identifiers);
}

} // namespace velmora
