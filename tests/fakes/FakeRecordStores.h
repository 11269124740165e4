// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ManualLoop.h"
#include "platform/RecordStores.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

/// Records in memory, in order of their creation, shared by all databases that look at them.
struct FakeRecords {
    std::vector<CloudRecord> stored;

    CloudRecord* find(const std::string& name)
    {
        const auto found = std::ranges::find(stored, name, &CloudRecord::name);
        return found == stored.end() ? nullptr : &*found;
    }

    void merge(const CloudRecord& record)
    {
        auto* present = find(record.name());
        if (!present) present = &stored.emplace_back(record.type(), record.name());
        auto fields = present->fields();
        for (const auto& [field, value] : record.changes()) fields.insert_or_assign(field, value);
        *present = CloudRecord(record.type(), record.name(), std::move(fields));
    }
};

/// One machine's way to the records. Answers in the order of the calls, on the loop, unless it is held up;
/// and fails on command.
class FakeCloudDatabase final : public CloudDatabase {
public:
    FakeCloudDatabase(std::shared_ptr<FakeRecords> records, std::shared_ptr<ManualLoop> loop)
        : records_(std::move(records)), loop_(std::move(loop))
    {
    }

    bool isFailing = false;         ///< every request
    bool isFailingToFetch = false;  ///< likewise, of the fetches
    bool isHeldUp = false;          ///< nothing is done until `letGo`
    std::vector<std::string> calls; ///< "fetch NAME", "save NAME", "query", "remove NAME"

    void letGo()
    {
        isHeldUp = false;
        for (auto& work : std::exchange(waiting_, {})) loop_->post(work);
    }

    void fetch(std::string name, Fetched fetched) override
    {
        const auto work = [this, name, fetched] {
            const auto* found = records_->find(name);
            if (isFailing || isFailingToFetch) return fetched(broken());
            if (name == nonsense)
                return fetched(CloudError{.code = CloudError::Code::unreadable, .text = "nonsense"});
            if (found) return fetched(CloudRecord(found->type(), found->name(), found->fields()));
            fetched(CloudError{.code = CloudError::Code::notFound, .text = "there is no such record"});
        };
        enqueue("fetch " + name, work);
    }

    void save(CloudRecord record, Done done) override
    {
        enqueue("save " + record.name(), [this, record, done] {
            if (isFailing) return done(broken());
            records_->merge(record);
            done({});
        });
    }

    void query(std::string type, std::size_t maximum, Queried queried) override
    {
        enqueue("query", [this, type, maximum, queried] {
            if (isFailing) return queried(broken());
            Listing listing;
            for (const auto& record : records_->stored) {
                if (record.type() != type || listing.size() == maximum) continue;
                if (std::ranges::find(unreadable, record.name()) == unreadable.end())
                    listing.emplace_back(record);
                else
                    listing.emplace_back(broken());
            }
            queried(std::move(listing));
        });
    }

    void remove(std::string name, Done done) override
    {
        enqueue("remove " + name, [this, name, done] {
            if (isFailing) return done(broken());
            std::erase_if(records_->stored, [&](const auto& record) { return record.name() == name; });
            if (name == nonsense) nonsense.clear();
            done({});
        });
    }

    std::vector<std::string> unreadable; ///< names of records that a listing fails to read
    std::string nonsense;                ///< the name of a record that cannot be read until it is removed

private:
    static CloudError broken() { return {.text = "the store is broken", .fault = RecordFault::unreachable}; }

    void enqueue(std::string call, std::function<void()> work)
    {
        calls.push_back(std::move(call));
        // As a real one, it answers nothing once it is gone.
        const auto guarded = [work = std::move(work), alive = std::weak_ptr<const char>(alive_)] {
            if (!alive.expired()) work();
        };
        if (isHeldUp)
            waiting_.push_back(guarded);
        else
            loop_->post(guarded);
    }

    std::shared_ptr<FakeRecords> records_;
    std::shared_ptr<ManualLoop> loop_;
    std::vector<std::function<void()>> waiting_;
    std::shared_ptr<const char> alive_ = std::make_shared<const char>();
};

/// Opens databases over the same records, and answers tests as it is told.
struct FakeRecordStores final : RecordStores {
    explicit FakeRecordStores(std::shared_ptr<ManualLoop> loop) : loop_(std::move(loop)) {}

    std::shared_ptr<FakeRecords> records = std::make_shared<FakeRecords>();
    std::weak_ptr<FakeCloudDatabase> opened; ///< the last one
    std::vector<RecordPlace> places;         ///< that were opened
    bool isMissing = false;                  ///< what opens them is not installed
    RecordFault testAnswer = RecordFault::none;
    std::string testPassword; ///< that the last test was given

    std::shared_ptr<CloudDatabase> open(const RecordPlace& place, Password) override
    {
        if (isMissing) return nullptr;
        places.push_back(place);
        auto database = std::make_shared<FakeCloudDatabase>(records, loop_);
        opened = database;
        return database;
    }

    void test(const RecordPlace&, Password password, Tested tested) override
    {
        testPassword = password();
        loop_->post([tested, answer = testAnswer] { tested(answer, ""); });
    }

private:
    std::shared_ptr<ManualLoop> loop_;
};

} // namespace velmora
