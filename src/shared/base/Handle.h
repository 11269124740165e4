// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <memory>

namespace velmora {

/// Calls `Release`, a C library's function, on what is deleted.
template <auto Release>
struct Releaser {
    void operator()(auto* held) const noexcept { Release(held); }
};

/// Owns an object of a C library, to be given back with `Release`.
template <typename T, auto Release>
using Handle = std::unique_ptr<T, Releaser<Release>>;

/// The place for a C function to write a new object to: `sd_bus_open_system(out(bus))`. The handle takes the
/// object over at the end of the full expression, also where that throws.
template <typename T, typename Deleter>
class Out {
public:
    explicit Out(std::unique_ptr<T, Deleter>& handle) noexcept : handle_(handle) {}
    Out(const Out&) = delete;
    Out& operator=(const Out&) = delete;
    ~Out() { handle_.reset(made_); }

    operator T**() noexcept { return &made_; } // NOLINT: so that it can stand for the place itself

private:
    std::unique_ptr<T, Deleter>& handle_;
    T* made_ = nullptr;
};

template <typename T, typename Deleter>
Out<T, Deleter> out(std::unique_ptr<T, Deleter>& handle) noexcept
{
    return Out<T, Deleter>(handle);
}

} // namespace velmora
