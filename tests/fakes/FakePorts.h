// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/CalendarStore.h"
#include "platform/MainLoop.h"
#include "platform/NotificationCenter.h"
#include "platform/PowerSources.h"
#include "platform/Preferences.h"
#include "platform/SecretStore.h"
#include "platform/ServiceManager.h"
#include "platform/ThermalLevel.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

/// A port that reads as the test sets it, and says so when the test wants it to.
template <typename Port, typename Reading>
class FakeSensor : public Port {
public:
    Reading now{};

    [[nodiscard]] Subscription observeChanges(std::function<void()> changed) override
    {
        return changes_.observe(std::move(changed));
    }

    /// The change signal, whether anything changed or not.
    void announce() { changes_.emit(); }

    void become(Reading next)
    {
        now = std::move(next);
        announce();
    }

private:
    Signal<> changes_;
};

struct FakeThermalLevel final : FakeSensor<ThermalLevel, int> {
    int level() override { return now; }
};

struct FakePowerSources final : FakeSensor<PowerSources, std::vector<PowerSourceDescription>> {
    int readings = 0; ///< how often somebody looked

    std::vector<PowerSourceDescription> descriptions() override
    {
        ++readings;
        return now;
    }
};

/// Preferences that last as long as the test.
struct FakePreferences final : Preferences {
    std::map<std::string, bool, std::less<>> values;
    std::map<std::string, std::string, std::less<>> texts;
    int assignments = 0;

    bool boolean(std::string_view key) const override
    {
        const auto found = values.find(key);
        return found != values.end() && found->second;
    }
    void set(std::string_view key, bool value) override
    {
        ++assignments;
        values.insert_or_assign(std::string(key), value);
    }
    std::string text(std::string_view key) const override
    {
        const auto found = texts.find(key);
        return found == texts.end() ? "" : found->second;
    }
    void setText(std::string_view key, std::string_view value) override
    {
        ++assignments;
        texts.insert_or_assign(std::string(key), std::string(value));
    }
};

/// A service manager whose prompts stand until the test answers them.
struct FakeServiceManager final : ServiceManager {
    Status now = Status::notRegistered;
    std::vector<Completion> prompts;

    Status status() override { return now; }
    void registerService(Completion completion) override { prompts.push_back(std::move(completion)); }
};

/// A desktop that has given leave, takes every notice at once and keeps them all. Notices may be added on any
/// thread.
struct FakeNotificationCenter final : NotificationCenter {
    bool isGranted = true;
    std::optional<std::string> authorizationError;
    std::optional<std::string> deliveryError; ///< where set, every notice fails with it
    bool holdsAnswers = false;                ///< permission is asked for, and `answer` has not been called
    NotificationServer now{.name = "fake"};

    void requestAuthorization(Authorization answered) override
    {
        requests_.push_back(std::move(answered));
        if (!holdsAnswers) answer();
    }
    /// Answers whoever waits.
    void answer()
    {
        for (const auto& one : std::exchange(requests_, {})) one(isGranted, authorizationError);
    }

    void add(NotificationRequest request, Completion completed) override
    {
        if (!deliveryError) {
            const std::lock_guard guard(mutex_);
            std::erase_if(standing_, [&](const auto& one) { return one.identifier == request.identifier; });
            standing_.push_back(std::move(request));
            ++delivered_;
        }
        completed(deliveryError);
    }
    void removePending(std::vector<std::string>) override {}
    void removeDelivered(std::vector<std::string> identifiers) override
    {
        const std::lock_guard guard(mutex_);
        std::erase_if(standing_,
                      [&](const auto& one) { return std::ranges::count(identifiers, one.identifier) > 0; });
    }
    Subscription observeResponses(std::function<void(const NotificationResponse&)> responded) override
    {
        return responses.observe(std::move(responded));
    }
    NotificationServer server() const override { return now; }
    Subscription observeServer(std::function<void()> changed) override
    {
        return serverChanges.observe(std::move(changed));
    }

    /// The notices in the desktop's list, oldest first.
    std::vector<NotificationRequest> standing() const
    {
        const std::lock_guard guard(mutex_);
        return standing_;
    }
    /// How many were delivered, those replaced and removed included.
    int delivered() const
    {
        const std::lock_guard guard(mutex_);
        return delivered_;
    }

    Signal<NotificationResponse> responses;
    Signal<> serverChanges;

private:
    mutable std::mutex mutex_;
    std::vector<NotificationRequest> standing_;
    int delivered_ = 0;
    std::vector<Authorization> requests_;
};

/// Calendars that a test fills, and the leave to read them, which is given at once.
struct FakeCalendarStore final : CalendarStore {
    Authorization answer = Authorization::fullAccess; ///< what asking leads to
    std::optional<std::string> error;
    std::vector<CalendarEvent> calendar; ///< by their start
    bool isBroken = false;               ///< it cannot be read, and tells what it had
    std::atomic<bool> isPermitted = false;
    int readings = 0;

    Authorization authorizationStatus() const override { return status_; }
    void permit() override { isPermitted = true; }
    void requestFullAccess(Completion completion) override
    {
        if (!isPermitted) return completion(false, std::nullopt);
        status_ = answer;
        completion(answer == Authorization::fullAccess, error);
    }
    void relinquishAccess() override
    {
        isPermitted = false;
        status_ = Authorization::notDetermined;
    }
    std::optional<CalendarReading> events(Date from, Date to, const Predicate& isWanted) override
    {
        ++readings;
        if (status_ != Authorization::fullAccess) return std::nullopt;
        CalendarReading result{.isWhole = !isBroken};
        for (const auto& event : calendar)
            if (event.touches(from, to) && isWanted(event)) result.events.push_back(event);
        return result;
    }

private:
    std::atomic<Authorization> status_ = Authorization::notDetermined;
};

/// A store that keeps its items as long as the test, and an account of what it was asked.
struct FakeSecretStore final : SecretStore {
    using Address = std::pair<std::string, std::string>; ///< service, account

    explicit FakeSecretStore(std::shared_ptr<MainLoop> loop) : loop_(std::move(loop)) {}

    std::map<Address, std::string> items;
    bool isAvailable = true;
    bool holdsReady = false; ///< until `becomeReady`
    bool replaces = false;   ///< what is there already, as the store of a desktop does
    std::vector<SecretItem> added, removed;
    bool isCancelled = false;
    std::function<void()> onAdd;
    std::mutex mutex; ///< for tests whose store is asked on another thread

    SecretStatus add(const SecretItem& item) override
    {
        const std::lock_guard lock(mutex);
        added.push_back(item);
        if (onAdd) onAdd();
        if (!isAvailable) return SecretStatus::unavailable;
        if (replaces) items.erase({item.service, item.account});
        return items.emplace(Address{item.service, item.account}, item.data.value()).second
                   ? SecretStatus::success
                   : SecretStatus::unavailable; // one an address
    }
    SecretStatus copyMatching(SecretItem& item) override
    {
        const std::lock_guard lock(mutex);
        if (!isAvailable) return SecretStatus::unavailable;
        const auto found = items.find({item.service, item.account});
        if (found == items.end()) return SecretStatus::notFound;
        item.data = found->second;
        return SecretStatus::success;
    }
    SecretStatus remove(const SecretItem& item) override
    {
        const std::lock_guard lock(mutex);
        removed.push_back(item);
        if (!isAvailable) return SecretStatus::unavailable;
        return items.erase({item.service, item.account}) > 0 ? SecretStatus::success : SecretStatus::notFound;
    }
    void whenReady(std::function<void()> ready) override
    {
        waiting_.push_back(std::move(ready));
        if (!holdsReady) becomeReady();
    }
    void cancel() override { isCancelled = true; }

    void becomeReady()
    {
        for (auto& ready : std::exchange(waiting_, {})) loop_->post(std::move(ready));
    }

private:
    std::shared_ptr<MainLoop> loop_;
    std::vector<std::function<void()>> waiting_;
};

} // namespace velmora
