// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "fleet/CloudKitManager.h"
#include "platform/Preferences.h"
#include "platform/RecordStores.h"
#include "platform/SecretStore.h"
#include "platform/WorkQueue.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velmora {

/// The user's word on Ecosystem Sync: whether this machine is one of a fleet, where the fleet's records live,
/// and whether others may command it. Kept in the preferences, the password in the secret store.
///
/// There is a database only while it is on: a machine that has no fleet writes nothing. It is off until a
/// person turns it on. Main thread only.
class EcosystemSync {
    Lifetime lifetime_;
    CloudKitManager& manager_;
    std::shared_ptr<Preferences> preferences_;
    std::shared_ptr<RecordStores> stores_;
    std::shared_ptr<SecretStore> secrets_;
    std::shared_ptr<MainLoop> loop_;
    std::shared_ptr<Clock> clock_;
    std::shared_ptr<Log> log_;

public:
    static constexpr auto passwordService = "app.velmora.cloud";
    static constexpr double lowestLimit = DeviceReport::lowestLimit; ///< percent, of a command
    static constexpr double highestLimit = DeviceReport::highestLimit;

    /// Begins at once where it is on: as soon as the secret store is ready and this machine's identity known.
    /// `manager` must outlive this.
    explicit EcosystemSync(CloudKitManager& manager);
    EcosystemSync(const EcosystemSync&) = delete;
    EcosystemSync& operator=(const EcosystemSync&) = delete;

    Observable<bool> isOn;
    /// Commands of other machines are taken over; as long as nobody has said otherwise.
    Observable<bool> acceptsCommands;
    Observable<RecordPlace> place;
    Observable<std::string> deviceID{std::string()}; ///< this machine's; empty while not known
    /// Why there is no database although it is on, or why the person's last wish came to nothing.
    Observable<RecordFault> fault{RecordFault::none};
    /// This machine has left, and the store has not said yet whether its record is gone.
    Observable<bool> isLeaving{false};
    /// That record could not be removed when this machine left last.
    Observable<bool> isRecordLeft{false};
    Observable<bool> isTesting{false};
    /// Of the last test; nothing before one.
    Observable<std::optional<RecordFault>> testResult{std::nullopt};

    /// Called when a person has turned it on, or chosen another place, and there is a database now: what is
    /// to be seen of the fleet need not wait for a tick.
    std::function<void()> onBegun;

    /// Where the account at a place keeps its password in the secret store.
    static std::string passwordAccount(const RecordPlace& place);

    /// Whether `place` can be tried: a server has a host (no folder of a socket), a database, a user and a
    /// port, all of printable ASCII characters, among which only the password's file may have blanks.
    static bool isComplete(const RecordPlace& place);

    void turnOn();

    /// Removes this machine's record and turns it off, also where the record cannot be removed, which
    /// `isRecordLeft` says: others can do that then.
    void leave();

    /// From now on the records live there; nothing is taken along, each machine uploads itself again. This
    /// machine's record at the place before is removed, if that can be done.
    /// `password` is kept in the secret store first; without one the password that is there stays. A place
    /// that is not complete, or whose password cannot be kept, changes nothing: `fault` says so.
    void use(const RecordPlace& place, const std::optional<std::string>& password);

    /// Looks whether a place would do, with that password or the one that is kept.
    void test(const RecordPlace& place, const std::optional<std::string>& password);

    /// Has another machine of the fleet take these settings over: limit in percent. Whether it has, its
    /// report tells. False, and nothing is sent, for a limit that it does not take (see DeviceReport),
    /// without a database, or while that machine's settings are not known or it takes no commands.
    bool command(const std::string& deviceID, double limit, bool isAutoProtectOn, bool isStorageModeOn);

    /// Removes a machine that has been silent for long; not this one. False where it was not begun.
    bool removeDevice(const std::string& deviceID);

private:
    void follow();
    void open();
    void adopt(const RecordPlace& place);
    RecordStores::Password keptPassword(const RecordPlace& place) const;
    void leaveRecords();
    const DeviceReport* find(const std::function<bool(const DeviceReport&)>& isMeant) const;
    RecordPlace kept() const;
    void keep() const;

    std::unique_ptr<WorkQueue> queue_; ///< saves passwords; made for that
    bool isReady_ = false;             ///< the secret store has answered
    bool isPersonsWish_ = false;       ///< what is opened next is a person's, who looks
};

} // namespace velmora
