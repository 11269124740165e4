// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace velmora {

/// The components of an iCalendar text that matter here, each cut out for itself: an event without its alarms
/// and attachments, which may be large, and a time zone as it is. So one that is broken costs no other.
struct ComponentSink {
    std::function<void(const std::string& component)> event;
    std::function<void(const std::string& component)> zone;
};

/// Longer components are passed over; a whole event has less without what is left out.
inline constexpr std::size_t maximumComponentBytes = 64U << 10U;

/// Returns whether each component that began has ended and was not too long.
bool splitComponents(std::string_view text, const ComponentSink& sink);

} // namespace velmora
