// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/LinuxRecordStores.h"

#include "base/Uuid.h"
#include "records/PasswordSource.h"
#include "records/StoreWorker.h"

#include <array>
#include <chrono>
#include <exception>
#include <stdexcept>
#include <thread>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "RecordStores";

constexpr std::array<ModuleLoader::Name, recordPlaceKindTexts.size()> modules{{
    {"velmora-sqlite.so", "velmora-session", recordModuleEntry},
    {"velmora-postgresql.so", "velmora-postgresql", recordModuleEntry},
}};

constexpr std::chrono::seconds longestTest{20};
constexpr long mostThreads = 8; ///< of stores and tests that have ended and not come back yet

constexpr auto consequence = "The fleet's records are neither read nor written.";

/// What keeps the store from working; nothing where it does.
std::optional<CloudError> found(RecordBackend& backend)
{
    if (auto error = backend.check()) return error;
    constexpr auto field = "isTest";
    CloudRecord record("VelmoraTest", "VelmoraTest_" + makeUuid());
    record.set(field, true);
    if (auto error = stored::save(backend, record)) return error;
    const auto fetched = stored::fetch(backend, record.name());
    auto notRemoved = backend.remove(record.name());
    if (const auto* error = std::get_if<CloudError>(&fetched)) return *error;
    if (!std::get<CloudRecord>(fetched).value<bool>(field))
        return CloudError{.text = "what was saved is not what was read"};
    return notRemoved;
}

CloudError tried(RecordBackend& backend)
{
    try {
        return found(backend).value_or(CloudError{.fault = RecordFault::none});
    } catch (const std::exception& error) {
        return {.text = error.what()};
    }
}

/// A test, which is answered once. Main thread only.
struct Trial {
    RecordStores::Tested tested;
    MainLoop::Timer watch;

    void end(const CloudError& result)
    {
        if (const auto tell = std::exchange(tested, nullptr)) tell(result.fault, result.text);
    }
};

} // namespace

LinuxRecordStores::LinuxRecordStores(Setup setup, std::shared_ptr<MainLoop> loop, std::shared_ptr<Log> log)
    : setup_(std::move(setup)),
      loop_(std::move(loop)),
      log_(std::move(log)),
      loader_({.folders = setup_.folders, .category = category, .consequence = consequence}, log_)
{
}

LinuxRecordStores::~LinuxRecordStores()
{
    constexpr auto step = std::chrono::milliseconds(2);
    for (int i = 0; i < 100 && presence_.use_count() > 1; ++i) std::this_thread::sleep_for(step);
}

std::shared_ptr<CloudDatabase> LinuxRecordStores::open(const RecordPlace& place, Password password)
{
    auto opened = backend(place, std::move(password));
    return opened ? std::make_shared<StoreWorker>(std::move(opened), presence_) : nullptr;
}

void LinuxRecordStores::test(const RecordPlace& place, Password password, Tested tested)
{
    std::shared_ptr<RecordBackend> opened = backend(place, std::move(password));
    if (!opened) {
        const std::string detail =
            std::string(modules.at(static_cast<std::size_t>(place.kind)).file) + " could not be loaded";
        return loop_->post([tested = std::move(tested), detail] { tested(RecordFault::noModule, detail); });
    }
    const auto trial = std::make_shared<Trial>();
    trial->tested = std::move(tested);
    trial->watch = loop_->after(longestTest, [weak = std::weak_ptr(trial), backend = std::weak_ptr(opened)] {
        if (const auto late = backend.lock()) late->cancel();
        if (const auto kept = weak.lock())
            kept->end({.text = "the test does not come to an end", .fault = RecordFault::unreachable});
    });
    try {
        if (presence_.use_count() > mostThreads) throw std::runtime_error("earlier tests are still at work");
        std::thread([loop = loop_, opened = std::move(opened), trial, presence = presence_]() mutable {
            const auto result = tried(*opened);
            opened.reset();
            loop->post([trial = std::move(trial), result] { trial->end(result); });
        }).detach();
    } catch (const std::exception& error) {
        loop_->post([trial, why = std::string(error.what())] { trial->end({.text = why}); });
    }
}

std::unique_ptr<RecordBackend> LinuxRecordStores::backend(const RecordPlace& place, Password password)
{
    const auto* found = loader_.module<RecordModule>(modules.at(static_cast<std::size_t>(place.kind)));
    if (!found) return nullptr;
    try {
        return found->open({.place = place,
                            .file = setup_.file,
                            .password = passwordSource(place, std::move(password), log_),
                            .log = log_});
    } catch (const std::exception& error) {
        log_->error(category,
                    std::string("Could not make a record store: ") + error.what() + ". " + consequence);
        return nullptr;
    }
}

} // namespace velmora
