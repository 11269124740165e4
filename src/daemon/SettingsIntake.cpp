// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SettingsIntake.h"

#include <utility>

namespace velmora {

namespace {

constexpr auto category = "Daemon";

SettingsMask usersOwn()
{
    return settingsOf(Setting::Owner::user);
}

/// The override, which is asked for rather than set.
SettingsMask overrideAlone()
{
    return differing({}, {.isTemporaryOverride = true});
}

/// "customChargeLimit 70, isStorageModeEnabled true".
std::string listed(const ChargingSettings& settings, SettingsMask fields)
{
    std::string text;
    for (std::size_t i = 0; i < allSettings.size(); ++i)
        if (fields[i]) text += (text.empty() ? "" : ", ") + allSettings[i].textIn(settings);
    return text;
}

std::string nameOf(const Caller& caller)
{
    return caller.busName + " (user " + std::to_string(caller.uid) + ")";
}

} // namespace

SettingsIntake::SettingsIntake(Ports ports, QuickCharge& quickCharge, const ChargingSettings& machine,
                               const UserSettings::Entries& users)
    : ports_(std::move(ports)),
      quickCharge_(quickCharge),
      machine_(combined(machine, {}, usersOwn() | overrideAlone())),
      users_(users),
      announced_(this->machine()),
      refusals_(ports_.loop, ports_.log, ports_.clock, category),
      changes_(ports_.loop, ports_.log, ports_.clock, category, LogBudget::manyAtOnce)
{
}

ChargingSettings SettingsIntake::machine() const
{
    auto settings = machine_;
    settings.isTemporaryOverride = quickCharge_.isActive();
    return settings;
}

ChargingSettings SettingsIntake::heldFor(uid_t user)
{
    return combined(machine(), users_.of(user), usersOwn());
}

void SettingsIntake::restore(const std::vector<std::pair<std::string, ChargingSettings>>& messages)
{
    for (const auto& [caller, message] : messages) callers_.of(caller).accepted = message;
}

ChargingSettings SettingsIntake::tell(const Caller& caller)
{
    const auto held = heldFor(caller.uid);
    callers_.of(caller.busName) = {caller.uid, held, std::nullopt};
    return held;
}

/// A client that was not heard before wishes all that it says, but for a quick charge that is spent: it may
/// never have said otherwise.
SettingsChange SettingsIntake::wishOf(const Caller& caller, const ChargingSettings& message)
{
    const auto& last = callers_.of(caller.busName).accepted;
    SettingsChange wish{clamped(message), last ? differing(*last, message) : SettingsMask().set()};
    const bool isSpent = quickCharge_.state() == QuickCharge::State::spent;
    if (!last && isSpent && message.isTemporaryOverride) wish.fields &= ~overrideAlone();
    return wish;
}

SettingsMask SettingsIntake::machineChanges(const SettingsChange& wish) const
{
    return wish.fields & settingsOf(Setting::Owner::machine) & differing(machine(), wish.values);
}

void SettingsIntake::take(const Caller& caller, const ChargingSettings& message)
{
    auto& last = callers_.of(caller.busName);
    last.user = caller.uid;
    if (last.accepted == message) return last.refused.reset();
    if (last.refused == message) return correct(caller);
    if (const auto problem = problemWith(message)) {
        refusals_.warning("Refused settings from " + nameOf(caller) + ": " + *problem + ".");
        return refuse(caller, message);
    }
    const auto wish = wishOf(caller, message);
    takeOwn(caller, wish);
    // Of a message that is refused for the rest, this much was taken all the same.
    if (auto& accepted = callers_.of(caller.busName).accepted)
        accepted = combined(*accepted, message, usersOwn());
    const auto decided = [this, caller, message, wish](bool isAllowed) {
        if (!isAllowed) return refuse(caller, message);
        callers_.of(caller.busName) = {caller.uid, message, std::nullopt};
        accept(caller, wish);
        if (heldFor(caller.uid) != wish.values) correct(caller);
    };
    const auto fields = machineChanges(wish);
    if (fields.none()) return decided(true);
    authorise(caller, "change " + listed(wish.values, fields), decided);
}

void SettingsIntake::change(const Caller& caller, SettingsChange wish, DaemonService::SettingsReply reply)
{
    wish.values = combined({}, wish.values, wish.fields);
    if (auto problem = problemWith(wish.values)) return reply(Refusal{Refusal::Kind::invalid, *problem});
    wish.values = clamped(wish.values);
    const auto what = "change " + listed(wish.values, machineChanges(wish));
    const auto decided = [this, caller, wish, reply = std::move(reply), what](bool isAllowed) {
        if (!isAllowed) return reply(Refusal{Refusal::Kind::denied, "not authorised to " + what});
        auto& last = callers_.of(caller.busName);
        last.user = caller.uid;
        if (last.accepted) last.accepted = combined(*last.accepted, wish.values, wish.fields);
        takeOwn(caller, wish);
        accept(caller, wish);
        reply(heldFor(caller.uid));
    };
    if (machineChanges(wish).none()) return decided(true);
    authorise(caller, what, decided);
}

void SettingsIntake::authorise(const Caller& caller, const std::string& what, const Decided& decided)
{
    ports_.authorise(caller, lifetime_.guard([this, caller, what, decided](bool isAllowed) {
        if (!isAllowed) refusals_.warning("Did not let " + nameOf(caller) + " " + what + ": only root may.");
        decided(isAllowed);
    }));
}

void SettingsIntake::takeOwn(const Caller& caller, const SettingsChange& wish)
{
    const auto own = users_.of(caller.uid);
    const auto fields = wish.fields & usersOwn() & differing(own, wish.values);
    if (fields.none()) return;
    users_.set(caller.uid, combined(own, wish.values, fields));
    for (const auto& busName : callers_.connectionsOf(caller.uid))
        if (busName != caller.busName) ports_.announceTo(busName, archived(wish.values, fields));
    ports_.save();
}

void SettingsIntake::accept(const Caller& caller, const SettingsChange& wish)
{
    const bool concernsOverride = (wish.fields & overrideAlone()).any();
    const auto fields = machineChanges(wish);
    // Who takes the request back, or asks anew after having done so, means a new one.
    const bool isSpent = quickCharge_.state() == QuickCharge::State::spent;
    if (concernsOverride && isSpent) quickCharge_.ask(false);
    if (fields.none()) return;
    const auto before = machine();
    machine_ = combined(machine_, wish.values, fields & ~overrideAlone());
    if (concernsOverride) quickCharge_.ask(wish.values.isTemporaryOverride);
    changes_.info("New settings from " + nameOf(caller) + ": " + listed(wish.values, fields) + ".");
    announce();
    ports_.changed(caller, before);
}

void SettingsIntake::refuse(const Caller& caller, const ChargingSettings& message)
{
    callers_.of(caller.busName).refused = message;
    correct(caller);
    ports_.refused(caller);
}

void SettingsIntake::correct(const Caller& caller)
{
    ports_.announceTo(caller.busName, archived(heldFor(caller.uid)));
}

void SettingsIntake::adoptLimit(double percent)
{
    machine_.customChargeLimit = percent;
    announce();
}

void SettingsIntake::announce()
{
    const auto now = machine();
    const auto changed = differing(announced_, now);
    announced_ = now;
    if (changed.any()) ports_.announce(archived(now, changed));
}

} // namespace velmora
