// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "program/TerminationSignals.h"

#include <csignal>
#include <sys/signalfd.h>

namespace velmora {

TerminationSignals::TerminationSignals()
{
    sigset_t both;
    sigemptyset(&both);
    sigaddset(&both, SIGTERM);
    sigaddset(&both, SIGINT);
    pthread_sigmask(SIG_BLOCK, &both, nullptr);
    descriptor_ = Descriptor<::close>(signalfd(-1, &both, SFD_CLOEXEC | SFD_NONBLOCK));
}

void TerminationSignals::listen()
{
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_.get(), QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
        notifier_->setEnabled(false); // once is enough
        Q_EMIT received();
    });
}

} // namespace velmora
