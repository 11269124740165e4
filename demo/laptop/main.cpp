// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// velmora-laptop: shows a simulated laptop's files below a folder, and tells what it does. Commands come in
// on standard input; its end is not ours. Killed with -9, it leaves a dead mount behind; the next start on
// that folder clears it away (by hand: `umount -l DIR`, or as a user `fusermount3 -uz DIR`).

#include "LaptopOptions.h"
#include "LaptopShow.h"
#include "base/FileDescriptor.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace velmora {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds tick{200};

void say(const std::string& line)
{
    std::puts(line.c_str());
    std::fflush(stdout);
}

/// SIGTERM and SIGINT as a file; blocked before any thread starts, so that all inherit it.
FileDescriptor endingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes must not leave the mount behind
    return FileDescriptor(::signalfd(-1, &signals, SFD_CLOEXEC));
}

/// Standard input, line by line, as it comes.
class Commands {
public:
    int descriptor() const { return descriptor_; }

    /// Reads once, and hands out each line that is complete. Whether the show goes on.
    bool read(LaptopShow& show)
    {
        std::array<char, 512> buffer{};
        const auto size = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (size <= 0) descriptor_ = -1; // nobody there to command us
        pending_.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        for (auto end = pending_.find('\n'); end != pending_.npos; end = pending_.find('\n')) {
            if (!show.command(pending_.substr(0, end))) return false;
            pending_.erase(0, end + 1);
        }
        if (pending_.size() > buffer.size()) pending_.clear();
        return true;
    }

private:
    int descriptor_ = STDIN_FILENO;
    std::string pending_;
};

/// Until a signal or a command ends it.
void perform(LaptopShow& show, const FileDescriptor& signals)
{
    Commands commands;
    auto last = steady_clock::now();
    while (true) {
        std::array<pollfd, 2> waiting{pollfd{signals.get(), POLLIN, 0},
                                      pollfd{commands.descriptor(), POLLIN, 0}};
        ::poll(waiting.data(), waiting.size(), static_cast<int>(tick.count()));
        if (waiting[0].revents) return;
        if (waiting[1].revents && !commands.read(show)) return;
        const auto passed = std::chrono::duration_cast<milliseconds>(steady_clock::now() - last);
        last += passed;
        show.pass(std::min(passed, 5 * tick)); // we may have been stopped; no leap then
    }
}

int run(int argc, char** argv)
{
    const auto options = LaptopOptions::parse(argc, argv);
    SharedLaptop laptop(options.make());
    laptop.with([&](SimulatedLaptop& made) {
        if (options.level) made.setLevel(*options.level);
        if (options.load) made.setLoad(*options.load);
        if (options.heat) made.setHeat(*options.heat);
        if (options.isUnplugged) made.plug(false);
        made.takeAnnouncements();
    });

    const auto signals = endingSignals();
    std::string note;
    const auto tree = showTree(laptop, options.tree, note);
    if (!note.empty()) say("plain files, since nothing can be mounted here: " + note);
    say("ready: " + options.tree.folder.string() + ", " + std::string(tree->description()));
    LaptopShow show(laptop, *tree, options.speed, [&](const std::string& line) {
        if (!options.isQuiet) say(line);
    });
    perform(show, signals);
    return 0;
}

} // namespace

} // namespace velmora

int main(int argc, char** argv)
try {
    return velmora::run(argc, argv);
} catch (const std::exception& fault) {
    std::fprintf(stderr, "velmora-laptop: %s\n", fault.what());
    return 1;
}
