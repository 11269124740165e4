// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Mutex.h"
#include "identity/OpenIDClient.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>

namespace velmora {

/// One conversation with a provider, and what ends it from outside. All but `cancel` on the thread that has
/// it.
class Conversation {
public:
    /// What becomes of it when the program ends.
    enum class Ending {
        atOnce,
        whenAnswered, ///< where there is time: an answer that is lost could end the user's sign-in
    };

    explicit Conversation(Ending ending) : ending_(ending) {}

    Ending ending() const { return ending_; }

    /// False where it was cancelled before.
    bool begin(std::unique_ptr<OpenIDClient> client);
    OpenIDClient& client() { return *client_; }

    /// Any thread. Without effect once it is over.
    void cancel();
    /// Ends what is waited for; where nothing is any more, all goes on. Any thread.
    void interrupt();
    /// It is over. Whether it came to that without being cancelled.
    bool finish();

private:
    const Ending ending_;
    Mutex mutex_;
    std::shared_ptr<OpenIDClient> client_; ///< set under the mutex, once
    bool isCancelled_ VELMORA_GUARDED_BY(mutex_) = false;
    bool isOver_ VELMORA_GUARDED_BY(mutex_) = false;
};

/// The thread for all that is asked of identity providers, in the order of the calls. It is there while there
/// is something to do.
class ProviderThread : public std::enable_shared_from_this<ProviderThread> {
public:
    using Task = std::function<void()>;

    /// False where the system has no thread to give; the task is dropped. Any thread.
    bool run(Task task);

    /// What the thread is about to enter into. False, and it must not, where the program ends. For tasks.
    bool enter(const std::shared_ptr<Conversation>& conversation);
    bool isEnding() const;

    /// The program ends: tasks find `isEnding`, and get some moments to come to their own end. Whether they
    /// did; a conversation that waits for an answer that counts gets longer. Those that did not are
    /// cancelled, and left behind after another moment.
    bool end(const std::function<void()>& cancelAll);

private:
    static constexpr std::chrono::milliseconds moment{200};
    static constexpr std::chrono::milliseconds patience{2'000};

    void work();
    bool isDone(std::chrono::milliseconds limit);

    mutable Mutex mutex_;
    Condition changed_;
    std::deque<Task> waiting_ VELMORA_GUARDED_BY(mutex_);
    std::weak_ptr<Conversation> current_ VELMORA_GUARDED_BY(mutex_);
    bool isAtWork_ VELMORA_GUARDED_BY(mutex_) = false;
    bool isEnding_ VELMORA_GUARDED_BY(mutex_) = false;
};

} // namespace velmora
