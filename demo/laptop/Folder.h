// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "CapturedMachine.h"

#include <string>
#include <string_view>

namespace velmora {

/// The attributes of one folder of a captured machine, by name. The machine must outlive it.
class Folder {
public:
    /// `path` without a slash at its end.
    Folder(const CapturedMachine& machine, std::string path);

    const std::string& path() const { return path_; }
    std::string pathOf(std::string_view name) const;

    /// Readable or not.
    bool has(std::string_view name) const;
    /// Empty where there is no such file or it cannot be read.
    std::string text(std::string_view name) const;
    /// `fallback` where there is no whole decimal number.
    double number(std::string_view name, double fallback) const;

private:
    const CapturedMachine* machine_;
    std::string path_;
};

} // namespace velmora
