// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/CloudDatabase.h"
#include "records/RecordBackend.h"

#include <chrono>
#include <functional>
#include <memory>

namespace velmora {

/// A record store over a backend, which one thread asks, one request after the other. The thread starts with
/// the first request. It owns all that it needs: a store that ends leaves it behind where it still waits.
/// While something is asked for a second thread watches that it is answered in time, even by a backend that
/// never comes back.
class StoreWorker final : public CloudDatabase {
public:
    struct Bounds {
        std::chrono::milliseconds idle = std::chrono::seconds{2}; ///< after which the backend may rest
        /// A request that has waited so long behind others fails instead of being tried, and one that the
        /// backend has been at for so long fails, too.
        std::chrono::milliseconds patience = std::chrono::seconds{20};
        std::size_t requests = 256; ///< that wait; what is beyond fails at once
    };

    /// The threads hold `presence` until they are done, also after this store.
    StoreWorker(std::unique_ptr<RecordBackend> backend, std::shared_ptr<const void> presence, Bounds bounds);
    StoreWorker(std::unique_ptr<RecordBackend> backend, std::shared_ptr<const void> presence);
    StoreWorker(const StoreWorker&) = delete;
    StoreWorker& operator=(const StoreWorker&) = delete;
    ~StoreWorker() override;

    void fetch(std::string name, Fetched fetched) override;
    void save(CloudRecord record, Done done) override;
    void query(std::string type, std::size_t maximum, Queried queried) override;
    void remove(std::string name, Done done) override;

private:
    class Thread;

    template <typename Answer>
    void enqueue(std::function<Answer(RecordBackend&)> ask, std::function<void(Answer)> answered);

    std::shared_ptr<Thread> thread_;
};

/// What a backend's answer, or what is to be saved, means to the rest of Velmora. Any thread.
namespace stored {
CloudResult<CloudRecord> decoded(const StoredRecord& record);
CloudResult<CloudRecord> fetch(RecordBackend& backend, const std::string& name);
std::optional<CloudError> save(RecordBackend& backend, const CloudRecord& record);
CloudResult<CloudDatabase::Listing> query(RecordBackend& backend, const std::string& type,
                                          std::size_t maximum);
} // namespace stored

} // namespace velmora
