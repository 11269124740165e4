// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "program/TerminationSignals.h"

#include <QSocketNotifier>
#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace velmora {

TerminationSignals::TerminationSignals()
{
    sigset_t both;
    sigemptyset(&both);
    sigaddset(&both, SIGTERM);
    sigaddset(&both, SIGINT);
    pthread_sigmask(SIG_BLOCK, &both, nullptr);
    descriptor_ = signalfd(-1, &both, SFD_CLOEXEC | SFD_NONBLOCK);
}

TerminationSignals::~TerminationSignals()
{
    close(descriptor_);
}

void TerminationSignals::listen()
{
    auto* notifier = new QSocketNotifier(descriptor_, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false); // once is enough
        Q_EMIT received();
    });
}

} // namespace velmora
