// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace velmora {

/// A registration that lasts as long as it is kept. Drop it anywhere, at any time, even inside the callback.
using Subscription = std::shared_ptr<const void>;

/// An event. Calls its observers in order of subscription. One thread only.
template <typename... Args>
class Signal {
public:
    using Observer = std::function<void(const Args&...)>;

    /// Observers may subscribe, unsubscribe and emit meanwhile; one that subscribes now is called from the
    /// next emission on.
    void emit(const Args&... args) const
    {
        if (observers_.empty()) return;
        for (const auto present = observers_; const auto& one : present) {
            if (const auto observer = stillSubscribed(one)) (*observer)(args...);
        }
    }

    [[nodiscard]] Subscription observe(Observer observer)
    {
        std::erase_if(observers_, [](const auto& one) { return one.expired(); });
        auto kept = std::make_shared<const Kept>(std::make_shared<const Observer>(std::move(observer)));
        observers_.emplace_back(kept);
        return kept;
    }

    bool isObserved() const
    {
        return std::ranges::any_of(observers_, [](const auto& one) { return !one.expired(); });
    }

private:
    // The subscriber alone holds the outer pointer, a call in progress the inner one: who unsubscribes inside
    // its callback is gone at once, and not called again should that callback emit.
    using Kept = std::shared_ptr<const Observer>;

    static Kept stillSubscribed(const std::weak_ptr<const Kept>& one)
    {
        const auto kept = one.lock();
        return kept ? *kept : nullptr;
    }

    std::vector<std::weak_ptr<const Kept>> observers_;
};

/// A value that tells of every assignment, also when nothing changed. Its observers are called with the
/// incoming value before it can be read here. One thread only.
template <typename T>
class Observable {
public:
    /// `willChange`, where given, is emitted before the observers are called; it must outlive the observable.
    /// `didSet`, where given, is the owner's own: it runs after each assignment, when the new value is in
    /// place.
    explicit Observable(T initial, const Signal<>* willChange = nullptr, std::function<void()> didSet = {})
        : value_(std::move(initial)), willChange_(willChange), didSet_(std::move(didSet))
    {
    }
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

    const T& get() const { return value_; }

    /// Tells the model's observers, then this value's, then stores it, then tells the owner.
    void set(T incoming)
    {
        if (willChange_) willChange_->emit();
        observers_.emit(incoming);
        value_ = std::move(incoming);
        if (didSet_) didSet_();
    }

    [[nodiscard]] Subscription observe(typename Signal<T>::Observer observer)
    {
        return observers_.observe(std::move(observer));
    }

private:
    T value_;
    const Signal<>* willChange_;
    std::function<void()> didSet_;
    Signal<T> observers_;
};

} // namespace velmora
