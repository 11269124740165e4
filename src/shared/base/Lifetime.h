// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <memory>
#include <utility>

namespace velmora {

/// Ties callbacks to their owner: what `guard` wraps does nothing once the owner is gone. Make it the owner's
/// first member, so that it is there when the constructor hands out callbacks.
///
/// `guard` may be called on any thread while the owner exists. The guarded callback must run on the thread
/// that destroys the owner; otherwise the owner could be destroyed while it runs.
class Lifetime {
public:
    Lifetime() = default;
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;

    template <typename Callback>
    auto guard(Callback callback) const
    {
        return [token = std::weak_ptr<const char>(token_), callback = std::move(callback)](auto&&... args) {
            if (const auto alive = token.lock()) callback(std::forward<decltype(args)>(args)...);
        };
    }

private:
    std::shared_ptr<const char> token_ = std::make_shared<const char>();
};

} // namespace velmora
