// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cerrno>
#include <utility>

namespace velmora {

/// Owns a number that a system call gave, to be given back with `Close`: Descriptor<::close> for a file. A
/// negative number stands for none.
template <auto Close>
class Descriptor {
public:
    explicit Descriptor(int number = -1) noexcept : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor()
    {
        if (number_ >= 0) Close(number_);
    }

    int get() const noexcept { return number_; }
    explicit operator bool() const noexcept { return number_ >= 0; }

    /// Releases the number to the caller, who closes it.
    [[nodiscard]] int release() noexcept { return std::exchange(number_, -1); }

    /// Closes now. Returns 0 or the errno that `Close` gave: a late failure to write shows there.
    int close() noexcept { return Close(release()) == 0 ? 0 : errno; }

private:
    int number_;
};

} // namespace velmora
