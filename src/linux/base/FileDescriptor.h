// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace velmora {

/// Owns a file descriptor and closes it at the end. A negative number stands for none.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor()
    {
        if (descriptor_ >= 0) ::close(descriptor_);
    }

    int get() const noexcept { return descriptor_; }
    explicit operator bool() const noexcept { return descriptor_ >= 0; }

    /// Releases the descriptor to the caller, who closes it.
    [[nodiscard]] int release() noexcept { return std::exchange(descriptor_, -1); }

    /// Closes now. Returns 0 or the errno that close gave: a late failure to write shows there.
    int close() noexcept { return ::close(release()) == 0 ? 0 : errno; }

private:
    int descriptor_;
};

} // namespace velmora
