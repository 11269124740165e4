// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "fleet/EcosystemSync.h"

#include "account/DeviceIdentity.h"
#include "account/KeychainHelper.h"
#include "base/Wipe.h"
#include "platform/Platform.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "EcosystemSync";

namespace key = preference_key;

template <typename Enum, std::size_t Count>
Enum enumOf(const std::array<const char*, Count>& texts, std::string_view text, Enum otherwise)
{
    const auto* found = std::ranges::find(texts, text);
    return found == texts.end() ? otherwise : static_cast<Enum>(found - texts.begin());
}

std::uint16_t portOf(std::string_view text, std::uint16_t otherwise)
{
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc{} && end == text.data() + text.size() && port > 0 ? port : otherwise;
}

/// However they are reached.
bool areSameRecords(const RecordPlace& one, const RecordPlace& other)
{
    if (one.kind != other.kind) return false;
    return one.kind == RecordPlace::Kind::thisComputer ||
           (one.host == other.host && one.port == other.port && one.database == other.database &&
            one.user == other.user);
}

/// Printable ASCII, and no blanks.
bool isPlain(std::string_view text, std::size_t maximum)
{
    return text.size() <= maximum && std::ranges::all_of(text, [](char c) { return c > ' ' && c <= '~'; });
}

bool isPath(std::string_view text)
{
    constexpr std::size_t longest = 1'000;
    return text.size() <= longest && std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

} // namespace

EcosystemSync::EcosystemSync(CloudKitManager& manager)
    : manager_(manager),
      preferences_(Platform::current().preferences),
      stores_(Platform::current().recordStores),
      secrets_(Platform::current().secretStore),
      loop_(Platform::current().mainLoop),
      clock_(Platform::current().clock),
      log_(Platform::current().log),
      isOn(preferences_->boolean(key::isEcosystemSyncOn)),
      acceptsCommands(!preferences_->boolean(key::refusesCommands), nullptr,
                      [this] { preferences_->set(key::refusesCommands, !acceptsCommands.get()); }),
      place(kept())
{
    DeviceIdentity::shared().whenKnown(lifetime_.guard([this](const std::string& uuid) {
        deviceID.set(uuid);
        follow();
    }));
    secrets_->whenReady(lifetime_.guard([this] {
        isReady_ = true;
        follow();
    }));
}

// -- What a person wants

void EcosystemSync::turnOn()
{
    if (isOn.get()) return;
    isOn.set(true);
    preferences_->set(key::isEcosystemSyncOn, true);
    isPersonsWish_ = true;
    follow();
}

void EcosystemSync::leave()
{
    if (!isOn.get()) return;
    isOn.set(false);
    preferences_->set(key::isEcosystemSyncOn, false);
    fault.set(RecordFault::none);
    leaveRecords();
}

void EcosystemSync::leaveRecords()
{
    isLeaving.set(true);
    isRecordLeft.set(false);
    manager_.leave(lifetime_.guard([this](bool isGone) {
        if (!isGone)
            log_->warning(category, "Could not remove this machine's record: other machines may, once it has "
                                    "been silent for ten minutes.");
        isRecordLeft.set(!isGone);
        isLeaving.set(false);
    }));
}

void EcosystemSync::use(const RecordPlace& wanted, const std::optional<std::string>& password)
{
    if (!isComplete(wanted)) return fault.set(RecordFault::other);
    if (!password || wanted.kind == RecordPlace::Kind::thisComputer) return adopt(wanted);
    if (!queue_) queue_ = Platform::current().makeWorkQueue("velmora-fleet");
    const auto kept = lifetime_.guard([this, wanted](bool isKept) {
        if (isKept) return adopt(wanted);
        log_->warning(category, "The secret store did not take the password for " + passwordAccount(wanted) +
                                    ", being locked, absent or slow: the records stay where they are.");
        fault.set(RecordFault::noPassword);
    });
    queue_->async([loop = loop_, kept, account = passwordAccount(wanted), secret = guarded(*password)] {
        const bool isKept = KeychainHelper::shared().save(*secret, passwordService, account);
        loop->post([kept, isKept] { kept(isKept); });
    });
}

void EcosystemSync::adopt(const RecordPlace& wanted)
{
    const bool isElsewhere = !areSameRecords(place.get(), wanted);
    if (isElsewhere && manager_.hasDatabase.get()) leaveRecords();
    place.set(wanted);
    keep();
    isPersonsWish_ = true;
    follow();
}

void EcosystemSync::test(const RecordPlace& wanted, const std::optional<std::string>& password)
{
    if (isTesting.get()) return;
    if (!isComplete(wanted)) return testResult.set(RecordFault::other);
    isTesting.set(true);
    testResult.set(std::nullopt);
    const auto given = [secret = guarded(password.value_or(""))] { return *secret; };
    const auto tested = lifetime_.guard([this](RecordFault found, const std::string& detail) {
        if (found != RecordFault::none)
            log_->info(category, "The record store that was tried would not do: " + detail);
        isTesting.set(false);
        testResult.set(found);
    });
    stores_->test(wanted, password ? given : keptPassword(wanted), tested);
}

bool EcosystemSync::command(const std::string& target, double limit, bool isAutoProtectOn,
                            bool isStorageModeOn)
{
    const auto* report =
        find([name = device_record::nameOf(target)](const auto& one) { return one.recordName == name; });
    const bool isTaken = report && report->inForce && report->inForce->acceptsCommands;
    if (!isTaken || !report->takesLimit(limit)) return false;
    manager_.syncRemoteControl(limit, isAutoProtectOn, isStorageModeOn, target);
    return true;
}

bool EcosystemSync::removeDevice(const std::string& device)
{
    // A record under another name than its device's may stand beside that device's own.
    const auto* report = find([&, own = device_record::nameOf(deviceID.get())](const auto& one) {
        return one.state.deviceID == device && one.recordName != own && one.isSilent(clock_->now());
    });
    if (!report) return false;
    manager_.removeRecord(report->recordName, [](bool) {});
    return true;
}

// -- Where the records live

/// There is a database while sync is on and this machine has an identity.
void EcosystemSync::follow()
{
    if (isOn.get() && isReady_ && !deviceID.get().empty()) open();
}

void EcosystemSync::open()
{
    auto database = stores_->open(place.get(), keptPassword(place.get()));
    fault.set(database ? RecordFault::none : RecordFault::noModule);
    manager_.useDatabase(std::move(database), deviceID.get());
    if (std::exchange(isPersonsWish_, false) && manager_.hasDatabase.get() && onBegun) onBegun();
}

RecordStores::Password EcosystemSync::keptPassword(const RecordPlace& at) const
{
    if (at.kind == RecordPlace::Kind::thisComputer) return [] { return std::string(); };
    return [secrets = secrets_, account = passwordAccount(at)] {
        SecretItem item{.service = passwordService, .account = account};
        const auto status = secrets->copyMatching(item);
        return status == SecretStatus::success ? item.data.value_or("") : std::string();
    };
}

std::string EcosystemSync::passwordAccount(const RecordPlace& at)
{
    return at.user + "@" + at.host + ":" + std::to_string(at.port) + "/" + at.database;
}

bool EcosystemSync::isComplete(const RecordPlace& wanted)
{
    constexpr std::size_t longestHost = 255, longestName = 63;
    if (wanted.kind == RecordPlace::Kind::thisComputer) return true;
    const auto isName = [](const auto& text) { return !text.empty() && isPlain(text, longestName); };
    // A folder stands for a socket, where whoever listens could read the password.
    const bool isHost =
        !wanted.host.empty() && isPlain(wanted.host, longestHost) && !wanted.host.starts_with('/');
    return isHost && isName(wanted.database) && isName(wanted.user) && isPath(wanted.passwordFile) &&
           wanted.port > 0;
}

const DeviceReport* EcosystemSync::find(const std::function<bool(const DeviceReport&)>& isMeant) const
{
    const auto& devices = manager_.devices.get();
    const auto found = std::ranges::find_if(devices, isMeant);
    return found == devices.end() ? nullptr : &*found;
}

// -- Preferences

RecordPlace EcosystemSync::kept() const
{
    const RecordPlace usual;
    RecordPlace found{
        .kind = enumOf(recordPlaceKindTexts, preferences_->text(key::recordPlace), usual.kind),
        .host = preferences_->text(key::recordHost),
        .port = portOf(preferences_->text(key::recordPort), usual.port),
        .database = preferences_->text(key::recordDatabase),
        .user = preferences_->text(key::recordUser),
        .trust = enumOf(recordTrustTexts, preferences_->text(key::recordTrust), usual.trust),
        .passwordFile = preferences_->text(key::recordPasswordFile),
    };
    if (found.database.empty()) found.database = usual.database;
    if (isComplete(found)) return found;
    log_->warning(category, "The server of the fleet's records in the preferences has no host, database or "
                            "user that would do: this computer is used instead.");
    found.kind = RecordPlace::Kind::thisComputer;
    return found;
}

void EcosystemSync::keep() const
{
    const auto& at = place.get();
    preferences_->setText(key::recordPlace, recordPlaceKindTexts.at(static_cast<std::size_t>(at.kind)));
    preferences_->setText(key::recordHost, at.host);
    preferences_->setText(key::recordPort, std::to_string(at.port));
    preferences_->setText(key::recordDatabase, at.database);
    preferences_->setText(key::recordUser, at.user);
    preferences_->setText(key::recordTrust, recordTrustTexts.at(static_cast<std::size_t>(at.trust)));
    preferences_->setText(key::recordPasswordFile, at.passwordFile);
}

} // namespace velmora
