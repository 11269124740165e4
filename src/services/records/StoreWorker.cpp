// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/StoreWorker.h"

#include "base/Mutex.h"
#include "records/RecordCodec.h"

#include <deque>
#include <exception>
#include <optional>
#include <pthread.h>
#include <system_error>
#include <thread>
#include <utility>

namespace velmora {

// -- From texts to records and back

CloudResult<CloudRecord> stored::decoded(const StoredRecord& record)
{
    if (auto fields = record_codec::decode(record.fields))
        return CloudRecord(record.type, record.name, std::move(*fields));
    return CloudError{.code = CloudError::Code::unreadable,
                      .text = "the record " + record.name + " cannot be read"};
}

CloudResult<CloudRecord> stored::fetch(RecordBackend& backend, const std::string& name)
{
    const auto found = backend.fetch(name);
    const auto* error = std::get_if<CloudError>(&found);
    return error ? *error : decoded(std::get<StoredRecord>(found));
}

std::optional<CloudError> stored::save(RecordBackend& backend, const CloudRecord& record)
{
    auto fields = record_codec::encode(record.changes());
    if (!fields) return CloudError{.text = "the record " + record.name() + " is too long to be saved"};
    return backend.save({.type = record.type(), .name = record.name(), .fields = std::move(*fields)});
}

CloudResult<CloudDatabase::Listing> stored::query(RecordBackend& backend, const std::string& type,
                                                  std::size_t maximum)
{
    const auto found = backend.query(type, maximum);
    if (const auto* error = std::get_if<CloudError>(&found)) return *error;
    CloudDatabase::Listing listing;
    for (const auto& record : std::get<std::vector<StoredRecord>>(found)) listing.push_back(decoded(record));
    return listing;
}

// -- The thread

namespace {

using Tell = std::function<void()>;

/// What is asked of the backend, or without one the error that it is answered with. Gives what tells the
/// answer.
using Request = std::function<Tell(RecordBackend*, const CloudError& refusal)>;

} // namespace

class StoreWorker::Thread : public std::enable_shared_from_this<StoreWorker::Thread> {
public:
    Thread(std::unique_ptr<RecordBackend> backend, std::shared_ptr<const void> presence, Bounds bounds)
        : presence_(std::move(presence)), backend_(std::move(backend)), bounds_(bounds)
    {
    }

    void take(Request request);
    void end();

private:
    using Clock = std::chrono::steady_clock;
    struct Pending {
        Clock::time_point until;
        std::shared_ptr<const Request> request;
    };

    void start() VELMORA_REQUIRES(mutex_);
    void work();
    bool awaitWork() VELMORA_REQUIRES(mutex_);
    void answerNext() VELMORA_REQUIRES(mutex_);
    void watch();
    bool isAnythingPending() const VELMORA_REQUIRES(mutex_);
    Tell takeOverdue() VELMORA_REQUIRES(mutex_);

    std::shared_ptr<const void> presence_; // goes last
    const std::unique_ptr<RecordBackend> backend_;
    const Bounds bounds_;
    Mutex mutex_;
    Condition changed_;
    std::deque<Pending> waiting_ VELMORA_GUARDED_BY(mutex_);
    std::deque<std::shared_ptr<const Request>> tooMany_ VELMORA_GUARDED_BY(mutex_);
    std::optional<Pending> current_ VELMORA_GUARDED_BY(mutex_); // at the backend, and not answered yet
    bool isStarted_ VELMORA_GUARDED_BY(mutex_) = false;
    bool isWatched_ VELMORA_GUARDED_BY(mutex_) = false;
    bool isEnded_ VELMORA_GUARDED_BY(mutex_) = false;
    bool isResting_ VELMORA_GUARDED_BY(mutex_) = true;
};

void StoreWorker::Thread::take(Request request)
{
    auto taken = std::make_shared<const Request>(std::move(request));
    {
        const MutexLock lock(mutex_);
        if (waiting_.size() < bounds_.requests)
            waiting_.push_back({Clock::now() + bounds_.patience, std::move(taken)});
        else
            tooMany_.push_back(std::move(taken));
        start();
    }
    changed_.notifyAll();
}

/// The watch first: it answers what nobody works on.
void StoreWorker::Thread::start()
{
    try {
        if (!isWatched_) std::thread([self = shared_from_this()] { self->watch(); }).detach();
        isWatched_ = true;
        if (!isStarted_) std::thread([self = shared_from_this()] { self->work(); }).detach();
        isStarted_ = true;
    } catch (const std::system_error&) {
        // The system has no thread to give now: the next request tries it again.
    }
}

void StoreWorker::Thread::end()
{
    std::deque<Pending> dropped;
    std::deque<std::shared_ptr<const Request>> alsoDropped;
    {
        const MutexLock lock(mutex_);
        isEnded_ = true;
        dropped.swap(waiting_);
        alsoDropped.swap(tooMany_);
    }
    changed_.notifyAll();
    backend_->cancel();
}

bool StoreWorker::Thread::awaitWork()
{
    const auto restAt = Clock::now() + bounds_.idle;
    while (!isEnded_ && waiting_.empty()) {
        if (isResting_) {
            changed_.wait(mutex_);
        } else if (!changed_.waitUntil(mutex_, restAt) && !isEnded_ && waiting_.empty()) {
            isResting_ = true;
            mutex_.unlock();
            backend_->rest();
            mutex_.lock();
        }
    }
    return !isEnded_;
}

void StoreWorker::Thread::work()
{
    pthread_setname_np(pthread_self(), "velmora-records");
    const MutexLock lock(mutex_);
    while (awaitWork()) answerNext();
}

void StoreWorker::Thread::answerNext()
{
    isResting_ = false;
    auto request = std::move(waiting_.front().request);
    waiting_.pop_front();
    current_ = {Clock::now() + bounds_.patience, request};
    mutex_.unlock();
    Tell tell = (*request)(backend_.get(), {});
    mutex_.lock();
    auto own = std::exchange(current_, std::nullopt);
    const bool isWanted = !isEnded_ && own;
    mutex_.unlock();
    changed_.notifyAll();
    if (isWanted) tell();
    tell = nullptr; // what they hold goes outside of the lock: the store may end with it
    own.reset();
    request.reset();
    mutex_.lock();
}

// -- What the backend does not come to in time

bool StoreWorker::Thread::isAnythingPending() const
{
    return current_ || !waiting_.empty() || !tooMany_.empty();
}

void StoreWorker::Thread::watch()
{
    pthread_setname_np(pthread_self(), "velmora-watch");
    const MutexLock lock(mutex_);
    while (!isEnded_ && isAnythingPending()) {
        Tell tell = takeOverdue();
        if (!tell) {
            changed_.waitUntil(mutex_, current_ ? current_->until : waiting_.front().until);
            continue;
        }
        mutex_.unlock();
        tell();
        tell = nullptr;
        mutex_.lock();
    }
    isWatched_ = false;
}

/// What has waited longest comes first: the request at the backend before those behind it.
Tell StoreWorker::Thread::takeOverdue()
{
    const auto now = Clock::now();
    const auto refused = [](const auto& request, const char* why, RecordFault fault) {
        return [request, error = CloudError{.text = why, .fault = fault}] { (*request)(nullptr, error)(); };
    };
    constexpr auto busy = "the store is busy with earlier requests";
    if (!tooMany_.empty()) {
        const auto request = std::move(tooMany_.front());
        tooMany_.pop_front();
        return refused(request, busy, RecordFault::slow);
    }
    if (current_ && current_->until <= now) {
        const auto request = std::exchange(current_, std::nullopt)->request;
        return refused(request, "the store does not come to an end with the request",
                       RecordFault::unreachable);
    }
    if (waiting_.empty() || waiting_.front().until > now) return nullptr;
    const auto request = std::move(waiting_.front().request);
    waiting_.pop_front();
    return refused(request, busy, RecordFault::slow);
}

// -- The store

StoreWorker::StoreWorker(std::unique_ptr<RecordBackend> backend, std::shared_ptr<const void> presence,
                         Bounds bounds)
    : thread_(std::make_shared<Thread>(std::move(backend), std::move(presence), bounds))
{
}

StoreWorker::StoreWorker(std::unique_ptr<RecordBackend> backend, std::shared_ptr<const void> presence)
    : StoreWorker(std::move(backend), std::move(presence), Bounds())
{
}

StoreWorker::~StoreWorker()
{
    thread_->end();
}

template <typename Answer>
void StoreWorker::enqueue(std::function<Answer(RecordBackend&)> ask, std::function<void(Answer)> answered)
{
    const auto asked = [ask = std::move(ask)](RecordBackend* backend, const CloudError& refusal) -> Answer {
        if (!backend) return refusal;
        try {
            return ask(*backend);
        } catch (const std::exception& error) {
            return CloudError{.text = error.what()};
        }
    };
    // The answer may end this store before the thread has been told that there is something to do.
    const auto thread = thread_;
    thread->take([asked, answered = std::move(answered)](auto* backend, const auto& refusal) -> Tell {
        return [answered, answer = asked(backend, refusal)]() mutable { answered(std::move(answer)); };
    });
}

void StoreWorker::fetch(std::string name, Fetched fetched)
{
    enqueue<CloudResult<CloudRecord>>(
        [name = std::move(name)](auto& backend) { return stored::fetch(backend, name); }, std::move(fetched));
}

void StoreWorker::save(CloudRecord record, Done done)
{
    enqueue<std::optional<CloudError>>(
        [record = std::move(record)](auto& backend) { return stored::save(backend, record); },
        std::move(done));
}

void StoreWorker::query(std::string type, std::size_t maximum, Queried queried)
{
    enqueue<CloudResult<Listing>>(
        [type = std::move(type), maximum](auto& backend) { return stored::query(backend, type, maximum); },
        std::move(queried));
}

void StoreWorker::remove(std::string name, Done done)
{
    enqueue<std::optional<CloudError>>(
        [name = std::move(name)](auto& backend) { return backend.remove(name); }, std::move(done));
}

} // namespace velmora
