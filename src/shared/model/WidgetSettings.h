// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Observable.h"
#include "platform/Preferences.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The top left corner of a widget, in pixels as windows are measured.
struct WidgetPlace {
    std::int32_t x = 0;
    std::int32_t y = 0;

    /// What a display can have.
    static constexpr std::int32_t lowest = -32'768;
    static constexpr std::int32_t highest = 32'767;

    friend bool operator==(const WidgetPlace&, const WidgetPlace&) = default;
};

/// The user's settings of one of the desktop's widgets. Every assignment is remembered. Main thread
/// only.
class WidgetSettings {
    std::shared_ptr<Preferences> preferences_;
    std::string name_;

public:
    Observable<bool> isPinned; ///< stays above all other windows
    Observable<bool> isShownAtLogIn;
    Observable<std::optional<WidgetPlace>> place; ///< nothing while it was never moved

    /// `name` is the widget's in the preferences of the installed platform. An invalid value there counts as
    /// never set and is logged.
    explicit WidgetSettings(std::string_view name);
    WidgetSettings(const WidgetSettings&) = delete;
    WidgetSettings& operator=(const WidgetSettings&) = delete;

private:
    std::string key(const char* setting) const;
    std::optional<WidgetPlace> remembered() const;
};

} // namespace velmora
