// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/TerminalSecret.h"

#include "base/FileDescriptor.h"
#include "base/Wipe.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/signalfd.h>
#include <termios.h>

namespace velmora {

namespace {

constexpr std::size_t longestLine = 4'096; // what a terminal gives at once

/// As long as it lasts, signals that end or stop a program wait, and `fd` tells of them.
class HeldSignals {
public:
    HeldSignals()
    {
        sigset_t held;
        sigemptyset(&held);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) sigaddset(&held, signal);
        pthread_sigmask(SIG_BLOCK, &held, &before_);
        fd_ = FileDescriptor(signalfd(-1, &held, SFD_CLOEXEC | SFD_NONBLOCK));
    }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
    ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

    int fd() const { return fd_.get(); }

private:
    sigset_t before_{};
    FileDescriptor fd_;
};

/// As long as it lasts, the terminal does not show what is typed.
class SilentTerminal {
public:
    explicit SilentTerminal(int fd) : fd_(fd)
    {
        isSilent_ = tcgetattr(fd, &before_) == 0;
        auto silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silent.c_lflag |= static_cast<tcflag_t>(ECHONL | ICANON | ISIG);
        isSilent_ = isSilent_ && tcsetattr(fd, TCSAFLUSH, &silent) == 0;
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;
    ~SilentTerminal()
    {
        if (isSilent_) tcsetattr(fd_, TCSAFLUSH, &before_);
    }

    bool isSilent() const { return isSilent_; }

private:
    int fd_;
    termios before_{};
    bool isSilent_ = false;
};

/// Whether the terminal has a line, rather than a signal come.
bool isTyped(int terminal, int signals)
{
    std::array<pollfd, 2> waited{{{terminal, POLLIN, 0}, {signals, POLLIN, 0}}};
    while (poll(waited.data(), waited.size(), -1) < 0) {
        if (errno != EINTR) return false;
    }
    return waited[1].revents == 0 && (waited[0].revents & POLLIN) != 0;
}

} // namespace

std::optional<std::string> askSecret(const std::string& prompt)
{
    const FileDescriptor terminal(open("/dev/tty", O_RDWR | O_CLOEXEC));
    if (terminal.get() < 0) return std::nullopt;
    const HeldSignals signals;
    const SilentTerminal silence(terminal.get());
    if (!silence.isSilent()) return std::nullopt;
    if (write(terminal.get(), prompt.data(), prompt.size()) < 0) return std::nullopt;
    if (!isTyped(terminal.get(), signals.fd())) return std::nullopt;
    std::string line(longestLine, '\0');
    const auto size = read(terminal.get(), line.data(), line.size());
    if (size <= 0) return std::nullopt;
    std::string secret(line.data(), static_cast<std::size_t>(size));
    wipe(line);
    if (secret.ends_with('\n')) secret.pop_back();
    return secret;
}

} // namespace velmora
