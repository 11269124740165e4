// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "history/AnalyticsStore.h"

#include "base/WholeFile.h"
#include "history/HistoryCodec.h"
#include "platform/Platform.h"

namespace velmora {

namespace fs = std::filesystem;

namespace {

fs::path defaultFile()
{
    const auto& platform = Platform::current();
    if (platform.applicationSupportDirectories.empty()) {
        const auto& folder = platform.temporaryDirectory;
        return folder.empty() ? folder : folder / "velmora_history.json";
    }
    const auto folder = platform.applicationSupportDirectories.front() / "Velmora";
    makePrivateFolder(folder);
    return folder / "history.json";
}

} // namespace

AnalyticsStore& AnalyticsStore::shared()
{
    return Platform::current().singleton<AnalyticsStore>();
}

AnalyticsStore::AnalyticsStore(std::optional<fs::path> file)
    : fileURL_(file ? *std::move(file) : defaultFile()),
      mainLoop_(Platform::current().mainLoop),
      clock_(Platform::current().clock),
      queue_(Platform::current().makeWorkQueue("app.velmora.analytics"))
{
    queue_->async([this] { loadFromDisk(); });
}

void AnalyticsStore::record(double percentage, std::string thermalState, bool isCharging, double health)
{
    queue_->async([=, this, thermal = std::move(thermalState)] {
        intake({clock_->now(), percentage, health, thermal, isCharging});
    });
}

void AnalyticsStore::publish()
{
    mainThread_.check();
    auto copy = std::make_shared<const History>(history.get());
    const MutexLock lock(mutex_);
    published_.swap(copy);
}

std::shared_ptr<const AnalyticsStore::History> AnalyticsStore::published() const
{
    const MutexLock lock(mutex_);
    return published_;
}

void AnalyticsStore::loadFromDisk()
{
    const auto bytes = readWholeFile(fileURL_);
    auto samples = bytes ? decodeHistory(*bytes) : std::nullopt;
    if (!samples) {
        isLoaded_ = true; // nothing in the file is worth keeping
        return;
    }
    mainLoop_->post(lifetime_.guard([this, loaded = *std::move(samples)] {
        history.set(loaded);
        isLoaded_ = true;
    }));
}

void AnalyticsStore::intake(const HSHistorySnapshot& candidate)
{
    const auto samples = published();
    if (!isWorthKeeping(samples->empty() ? nullptr : &samples->back(), candidate)) return;
    mainLoop_->post(lifetime_.guard([this, candidate] { append(candidate); }));
    saveToDisk();
}

void AnalyticsStore::saveToDisk() const
{
    if (!isLoaded_) return;
    writeWholeFile(fileURL_, encodeHistory(*published()));
}

void AnalyticsStore::append(const HSHistorySnapshot& sample)
{
    auto samples = history.get();
    samples.push_back(sample);
    history.set(samples);
    if (samples.size() <= history_limits::maximumLength) return;
    samples.erase(samples.begin()); // one only: a longer history that was loaded keeps its length
    history.set(std::move(samples));
}

} // namespace velmora
