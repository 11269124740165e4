// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/CloudDatabase.h"
#include "platform/RecordStores.h"

#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace velmora {

/// Asks a record store and waits for its answer; one that never comes is an exception.
template <typename Answer, typename Ask>
Answer awaited(Ask ask)
{
    const auto promise = std::make_shared<std::promise<Answer>>();
    auto future = promise->get_future();
    ask([promise](Answer answer) { promise->set_value(std::move(answer)); });
    if (future.wait_for(std::chrono::seconds{30}) != std::future_status::ready)
        throw std::runtime_error("the store has not answered");
    return future.get();
}

/// What kept a request from being done, for a comparison that shows it: "" for nothing.
inline std::string problem(const std::optional<CloudError>& error)
{
    return error ? recordFaultTexts.at(static_cast<std::size_t>(error->fault)) + (": " + error->text) : "";
}

inline std::optional<CloudError> save(CloudDatabase& store, const std::string& name,
                                      const CloudRecord::Fields& fields,
                                      const std::string& type = "DeviceStatus")
{
    CloudRecord record(type, name);
    for (const auto& [field, value] : fields) record.set(field, value);
    return awaited<std::optional<CloudError>>([&](auto done) { store.save(record, done); });
}

inline CloudResult<CloudRecord> fetch(CloudDatabase& store, const std::string& name)
{
    return awaited<CloudResult<CloudRecord>>([&](auto fetched) { store.fetch(name, fetched); });
}

/// The fields of that record; none where it cannot be had.
inline CloudRecord::Fields fieldsOf(CloudDatabase& store, const std::string& name)
{
    const auto result = fetch(store, name);
    const auto* record = std::get_if<CloudRecord>(&result);
    return record ? record->fields() : CloudRecord::Fields();
}

/// The names of the records in their order, "?" for one that cannot be read; with a text what is wrong.
inline std::vector<std::string> listed(CloudDatabase& store, std::size_t maximum = 200)
{
    const auto result = awaited<CloudResult<CloudDatabase::Listing>>(
        [&](auto queried) { store.query("DeviceStatus", maximum, queried); });
    if (const auto* error = std::get_if<CloudError>(&result)) return {error->text};
    std::vector<std::string> names;
    for (const auto& entry : std::get<CloudDatabase::Listing>(result)) {
        const auto* record = std::get_if<CloudRecord>(&entry);
        names.push_back(record ? record->name() : "?");
    }
    return names;
}

inline std::optional<CloudError> remove(CloudDatabase& store, const std::string& name)
{
    return awaited<std::optional<CloudError>>([&](auto done) { store.remove(name, done); });
}

/// What a person's test of the place says, the log's text behind it.
template <typename Loop>
std::string tested(RecordStores& stores, Loop& loop, const RecordPlace& place,
                   RecordStores::Password password)
{
    std::optional<std::string> answer;
    stores.test(place, std::move(password), [&](RecordFault fault, const std::string& detail) {
        answer = problem(CloudError{.text = detail, .fault = fault});
    });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds{30};
    while (!answer && std::chrono::steady_clock::now() < deadline) {
        loop.runPosted();
        std::this_thread::sleep_for(std::chrono::milliseconds{5});
    }
    return answer.value_or("no answer");
}

} // namespace velmora
