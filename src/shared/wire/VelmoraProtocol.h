// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"
#include "wire/ChargingSettings.h"
#include "wire/KeyedArchive.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// What the daemon says of battery and charging control. Percent, percentage points and minutes.
struct HSBatteryState {
    static constexpr bool supportsSecureCoding = true;

    double percentage;
    bool isCharging;
    std::string powerSource;
    std::string thermalState; ///< a raw text of ThermalMonitorService::ThermalState
    double customChargeLimit;
    double customHysteresis;
    std::int64_t timeToFull; ///< minutes to 100 %, whatever the limit
    std::int64_t timeToEmpty;
    bool isStorageModeEnabled;

    HSBatteryState() = delete;
    HSBatteryState(double percentage, bool isCharging, std::string powerSource, std::string thermalState,
                   double customChargeLimit, double customHysteresis, std::int64_t timeToFull,
                   std::int64_t timeToEmpty, bool isStorageModeEnabled);

    explicit HSBatteryState(const KeyedArchive& archive);
    KeyedArchive archived() const;

    friend bool operator==(const HSBatteryState&, const HSBatteryState&) = default;
};

/// One sample of the battery's history.
struct HSHistorySnapshot {
    static constexpr bool supportsSecureCoding = true;

    Date timestamp;
    double percentage;
    double health;            ///< percent
    std::string thermalState; ///< a raw text of ThermalMonitorService::ThermalState
    bool isCharging;

    HSHistorySnapshot() = delete;
    HSHistorySnapshot(Date timestamp, double percentage, double health, std::string thermalState,
                      bool isCharging);

    /// `now` stamps a sample whose archive holds no date.
    HSHistorySnapshot(const KeyedArchive& archive, Date now);
    KeyedArchive archived() const;

    friend bool operator==(const HSHistorySnapshot&, const HSHistorySnapshot&) = default;
};

/// How the model reaches the daemon. No call blocks, and none reports a failure: a daemon that cannot be
/// reached does not answer.
class DaemonClientProtocol {
public:
    using StateHandler = std::function<void(const HSBatteryState&)>;
    using HistoryHandler = std::function<void(std::vector<HSHistorySnapshot>)>;

    virtual ~DaemonClientProtocol() = default;

    /// Called on the main thread for every state that the daemon pushes. A state pushed while there is no
    /// handler is dropped.
    StateHandler onStateChange;

    virtual void fetchCurrentState(StateHandler completion) = 0;
    virtual void fetchHistory(HistoryHandler completion) = 0;
    virtual void updateSettings(const ChargingSettings& settings) = 0;
    /// What `act` sends is a person's wish; all else the program sends by itself.
    virtual void asPerson(const std::function<void()>& act) { act(); }
};

/// The wire between daemon and clients, declared once for both ends.
namespace wire {

inline constexpr auto serviceName = "app.velmora.daemon";
inline constexpr auto objectPath = "/app/velmora/daemon";

struct Argument {
    const char* name;
    const char* type; ///< D-Bus signature
};

/// One message of an interface. Its member name on the bus is the selector with the colons turned into
/// underscores and the last one dropped.
struct Message {
    const char* selector;
    std::span<const Argument> arguments;
    std::span<const Argument> reply; ///< empty: one way

    std::string member() const;
    static std::string signature(std::span<const Argument> arguments);
};

/// A record is a dictionary of its archive keys, a history a list of those.
inline constexpr auto recordType = "a{sv}";
inline constexpr auto recordListType = "aa{sv}";

/// Served by the daemon.
namespace daemon_protocol {
inline constexpr auto interface = "app.velmora.VelmoraDaemonProtocol";

inline constexpr std::array stateReply{Argument{"state", recordType}};
inline constexpr std::array historyReply{Argument{"history", recordListType}};
inline constexpr std::array chargingReply{Argument{"charging", "b"}};
/// All settings at once, in the order of their table.
inline constexpr auto settingsArguments = [] {
    std::array<Argument, allSettings.size()> arguments{};
    for (std::size_t i = 0; i < allSettings.size(); ++i)
        arguments[i] = {allSettings[i].name, allSettings[i].type()};
    return arguments;
}();
/// "updateSettingsWith", and each setting's name with a colon; the first begins in upper case.
inline constexpr auto settingsSelector = [] {
    std::array<char, 512> selector{};
    std::size_t end = 0;
    for (const char letter : std::string_view("updateSettingsWith")) selector[end++] = letter;
    const std::size_t first = end;
    for (const auto& setting : allSettings) {
        for (const char letter : std::string_view(setting.name)) selector[end++] = letter;
        selector[end++] = ':';
    }
    selector[first] -= 'a' - 'A';
    return selector;
}();

inline constexpr Message getBatteryState{"getBatteryStateWithReply:", {}, stateReply};
inline constexpr Message getAnalyticsHistory{"getAnalyticsHistoryWithReply:", {}, historyReply};
inline constexpr Message updateSettings{settingsSelector.data(), settingsArguments, {}};
inline constexpr Message toggleCharging{"toggleChargingWithReply:", {}, chargingReply};
inline constexpr std::array messages{&getBatteryState, &getAnalyticsHistory, &updateSettings,
                                     &toggleCharging};
} // namespace daemon_protocol

/// Pushed to the clients.
namespace client_protocol {
inline constexpr auto interface = "app.velmora.VelmoraClientProtocol";

inline constexpr std::array stateArgument{Argument{"state", recordType}};
inline constexpr Message batteryStateDidChange{"batteryStateDidChange:", stateArgument, {}};
} // namespace client_protocol

} // namespace wire

} // namespace velmora
