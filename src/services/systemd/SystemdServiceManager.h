// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Log.h"
#include "platform/ServiceManager.h"
#include "systemd/SystemdRegistration.h"

#include <list>
#include <memory>

namespace velmora {

/// The daemon as a unit of systemd, over the system bus. Each request opens a connection and closes it again,
/// since hardly any program asks twice. Loop's thread only.
class SystemdServiceManager final : public ServiceManager {
public:
    static constexpr auto unit = "app.velmora.daemon.service";

    /// Both must outlive this. Failures are logged, too.
    SystemdServiceManager(EventLoop& loop, Log& log) : loop_(loop), log_(log) {}

    Status status() override;
    void registerService(Completion completion) override;

private:
    EventLoop& loop_;
    Log& log_;
    std::list<std::unique_ptr<SystemdRegistration>> registrations_; ///< under way
};

} // namespace velmora
