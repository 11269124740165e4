// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace velmora::ctl {

/// Lines with a label each, one below the other; whatever their texts hold, they only show.
class Lines {
public:
    /// Nothing for an empty text.
    void add(const std::string& label, const std::string& text);
    std::string text() const;

private:
    static std::size_t width(const std::string& label);

    std::vector<std::pair<std::string, std::string>> lines_;
    std::size_t widest_ = 0;
};

} // namespace velmora::ctl
