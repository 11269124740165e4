// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Mutex.h"
#include "identity/OpenIDClient.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>

namespace velmora {

/// What goes first, and what gives way to it.
enum class Urgency : std::uint8_t {
    person, ///< somebody waits for it
    check,
    courtesy, ///< to the provider
};

/// One conversation with a provider, and what ends it from outside. All but `cancel`, `giveWay` and
/// `interrupt` on the thread that has it.
class Conversation {
public:
    explicit Conversation(Urgency urgency) : urgency_(urgency) {}

    Urgency urgency() const { return urgency_; }

    /// False where it was cancelled before.
    bool begin(std::unique_ptr<OpenIDClient> client);
    OpenIDClient& client() { return *client_; }

    /// From now on an answer is awaited whose loss could end the user's sign-in, until it is `answered`.
    /// False where it was cancelled before.
    bool commit();
    void answered();

    /// Without effect once it is over: then false.
    bool cancel();
    /// The same, unless an answer is awaited that counts: then false.
    bool giveWay();
    /// Ends what is waited for; where nothing is any more, all goes on.
    void interrupt();
    /// It is over. Whether it came to that without being cancelled.
    bool finish();

private:
    const Urgency urgency_;
    Mutex mutex_;
    std::shared_ptr<OpenIDClient> client_; ///< set under the mutex, once
    bool isCommitted_ VELMORA_GUARDED_BY(mutex_) = false;
    bool isCancelled_ VELMORA_GUARDED_BY(mutex_) = false;
    bool isOver_ VELMORA_GUARDED_BY(mutex_) = false;
};

/// A thread for what is asked of identity providers, the most urgent first, else in the order of the calls.
/// It is there while there is something to do.
class ProviderThread : public std::enable_shared_from_this<ProviderThread> {
public:
    using Task = std::function<void()>;

    /// The name is the system's, of 15 characters at most.
    explicit ProviderThread(const char* name) : name_(name) {}

    /// False where the system has no thread to give; the task is dropped. What is less urgent than a person
    /// gives way to one. Any thread.
    bool run(Urgency urgency, Task task);

    /// What the thread is about to enter into. False, and it must not, where the program ends or a person
    /// waits. For tasks.
    bool enter(const std::shared_ptr<Conversation>& conversation);
    bool isEnding() const;

    /// The program ends: tasks find `isEnding`, and get some moments to come to their own end. Whether they
    /// did; a conversation that waits for an answer that counts gets longer, and is cancelled then.
    bool end();
    /// Whether all is done after another moment.
    bool isDone() { return isDone(moment); }

private:
    static constexpr std::chrono::milliseconds moment{200};
    static constexpr std::chrono::milliseconds patience{2'000};

    void work();
    bool isDone(std::chrono::milliseconds limit);

    const char* const name_;
    mutable Mutex mutex_;
    Condition changed_;
    std::multimap<Urgency, Task> waiting_ VELMORA_GUARDED_BY(mutex_);
    std::weak_ptr<Conversation> current_ VELMORA_GUARDED_BY(mutex_);
    bool isAtWork_ VELMORA_GUARDED_BY(mutex_) = false;
    bool isEnding_ VELMORA_GUARDED_BY(mutex_) = false;
};

} // namespace velmora
