// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/RecordStores.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace velmora::ctl {

/// What `velmoractl fleet` is asked for.
struct FleetRequest {
    enum class Action : std::uint8_t {
        status,
        on,
        off,
        devices,
        limit,
        autoProtect,
        storage,
        remove,
        accept,
        test,
    };

    Action action = Action::status;
    std::string device{};               ///< identifier, the beginning of one, or name
    double limit = 0;                   ///< percent
    bool isOn = true;                   ///< of a switch
    std::optional<RecordPlace> place{}; ///< complete; nothing: the one that is kept
};

/// The words after `fleet`, one after another. All throw a Fault for what cannot be understood.
class FleetWords {
public:
    /// `value` gives the word after the option.
    void takeOption(std::string_view option, const std::function<std::string_view()>& value);
    void takeOperand(std::string_view word);
    /// All of them, once there are no more.
    FleetRequest finished();

private:
    struct Row;
    static const Row rows[];

    void takeAction(std::string_view word);
    void takeValue(std::string_view word);
    RecordPlace finishedPlace() const;

    FleetRequest request_;
    const Row* row_ = nullptr;
    int operands_ = 0;
    RecordPlace place_{};          ///< as far as the options say it
    std::string_view placeOption_; ///< the last of them; empty where there was none
};

} // namespace velmora::ctl
