// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <systemd/sd-bus.h>
#include <vector>

namespace velmora {

using Nanoseconds = std::chrono::nanoseconds;

/// How to start a program.
struct Program {
    std::string title;
    std::string path;
    std::vector<std::string> arguments{};
    std::vector<std::string> environment{}; ///< "NAME=value", on top of our own
};

/// A program that watches the battery and tells of it on the bus, and how to talk to it.
struct Contender {
    Program program;
    std::string service, object;
    std::string questionInterface, question; ///< a method without arguments
    /// The signal that carries a changed level.
    std::string pushObject, pushInterface, push;
};

/// What a message carries, all nesting undone. Leaves the message read to its end.
struct Contents {
    std::vector<double> numbers;
    std::vector<std::string> texts;

    static Contents of(sd_bus_message* message);
};

struct Memory {
    long residentKilobytes, ownKilobytes, proportionalKilobytes;
    long dirtyKilobytes; ///< what of its own it has written to
};

/// The process that owns a name on the bus, if one does.
std::optional<pid_t> processOf(sd_bus* bus, const char* name);

// Of a process that need not be ours.

/// Zeros where there is none.
Memory memoryOf(pid_t process);
/// User and system time of all its threads so far, those that have ended included.
Nanoseconds processorTimeOf(pid_t process);
/// How often any of its threads went to sleep of its own accord, and so was woken.
long wakeUpsOf(pid_t process);

/// Counts the system calls of a running process and all its threads, by strace, which slows it down. Nothing
/// else should be measured meanwhile.
class CallCounter {
public:
    /// Counts once the constructor has returned. What strace says goes to the file `log`.
    CallCounter(pid_t process, std::string log);
    ~CallCounter();
    CallCounter(const CallCounter&) = delete;
    CallCounter& operator=(const CallCounter&) = delete;

    /// Ends the counting. Nothing where strace cannot be run here.
    std::optional<long> end();

private:
    std::string log_;
    pid_t tracer_ = -1;
};

/// A started program; killed with the object.
class Process {
public:
    /// Throws std::system_error where it cannot be started. What it says goes to the file `log`.
    Process(const Program& program, const std::string& log);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    Nanoseconds processorTime() const { return processorTimeOf(id_); }
    long wakeUps() const { return wakeUpsOf(id_); }
    Memory memory() const { return memoryOf(id_); }
    pid_t id() const { return id_; }

private:
    pid_t id_ = -1;
};

} // namespace velmora
