// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SettingsIntake.h"

#include "base/UserName.h"

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

/// ":1.42 (user 1000, alice)".
std::string nameOf(const Caller& caller)
{
    const auto name = localUserName(caller.uid);
    return caller.busName + " (user " + std::to_string(caller.uid) + (name.empty() ? "" : ", " + name) + ")";
}

/// A phrase, also for who has asked.
const char* phrase(Refused why)
{
    switch (why) {
    case Refused::needsPassword:
        return "an administrator's password is needed, and could not be asked for";
    case Refused::unavailable:
        return "polkit is not there to decide it, so only root may";
    case Refused::superseded:
        return "a newer request of the same program took its place";
    case Refused::invalid:
    case Refused::denied:
        break;
    }
    return "polkit does not allow it";
}

} // namespace

SettingsIntake::SettingsIntake(Ports ports, QuickCharge& quickCharge, const ChargingSettings& machine,
                               const UserSettings::Entries& users)
    : ports_(std::move(ports)),
      quickCharge_(quickCharge),
      machine_(combined(machine, {}, usersOwn() | overrideAlone())),
      users_(users),
      announced_(this->machine()),
      refusals_(ports_.loop, ports_.log, ports_.clock, category)
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
    auto& last = callers_.of(caller.busName);
    last.user = caller.uid;
    last.accepted = held;
    last.refused.reset();
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

/// A person asks for the quick charge that was begun before a journey, and it becomes that person's own. Only
/// a change of single settings counts: in a message of all ten values an application repeats the flag.
bool SettingsIntake::takesOver(const SettingsChange& wish) const
{
    return (wish.fields & overrideAlone()).any() && wish.values.isTemporaryOverride &&
           quickCharge_.isForTravel();
}

void SettingsIntake::take(const Caller& caller, const ChargingSettings& message)
{
    auto& last = callers_.of(caller.busName);
    last.user = caller.uid;
    if (last.accepted == message) {
        withdraw(caller);
        return last.refused.reset();
    }
    // A person who tries again is asked again; what an application repeats by itself is not.
    if (last.refused == message && !caller.mayInteract) return correct(caller);
    if (const auto problem = problemWith(message)) {
        refusals_.warning("Refused settings from " + nameOf(caller) + ": " + *problem + ".");
        return refuse(caller, message, Refused::invalid);
    }
    const auto wish = wishOf(caller, message);
    const auto fields = machineChanges(wish);
    takeOwn(caller, wish);
    // Of a message that is refused for the rest, this much was taken all the same.
    if (auto& accepted = callers_.of(caller.busName).accepted)
        accepted = combined(*accepted, message, ~fields);
    if (isPending(caller, message, fields)) return;
    if (fields.any()) return ask(caller, message, {wish.values, fields});
    withdraw(caller);
    settle(caller, message, wish, std::nullopt);
}

/// Whether the question that is pending decides the same values: an application repeats them with whatever
/// else changes, and a person who types a password is not to begin anew.
bool SettingsIntake::isPending(const Caller& caller, const ChargingSettings& message, SettingsMask fields)
{
    const auto& pending = callers_.of(caller.busName).pending;
    return pending && fields.any() && (pending->mayInteract || !caller.mayInteract) &&
           (differing(pending->message, message) & fields).none();
}

void SettingsIntake::ask(const Caller& caller, const ChargingSettings& message, const SettingsChange& wish)
{
    const CallerMemory::Question question{message, caller.mayInteract};
    callers_.of(caller.busName).pending = question;
    authorise(caller, "change " + listed(wish.values, wish.fields),
              [this, caller, message, wish, question](const auto& refusal) {
                  auto& pending = callers_.of(caller.busName).pending;
                  if (pending != question) return; // a newer one is in its place
                  pending.reset();
                  // Somebody else may have changed what this one changed too, and it may have been told.
                  const auto still = wish.fields & wishOf(caller, message).fields;
                  settle(caller, message, {wish.values, still}, refusal);
              });
}

void SettingsIntake::settle(const Caller& caller, const ChargingSettings& message, const SettingsChange& wish,
                            const std::optional<Refusal>& refusal)
{
    if (refusal) return refuse(caller, message, refusal->why);
    auto& last = callers_.of(caller.busName);
    last.accepted = last.accepted ? combined(*last.accepted, message, wish.fields) : message;
    last.refused.reset();
    accept(caller, wish);
    if (heldFor(caller.uid) != clamped(message)) correct(caller);
}

/// The sender wants what is so: a question that it asked before is void. What an application repeats by
/// itself leaves that of a person alone.
void SettingsIntake::withdraw(const Caller& caller)
{
    auto& pending = callers_.of(caller.busName).pending;
    if (!pending || (pending->mayInteract && !caller.mayInteract)) return;
    pending.reset();
    ports_.withdraw(caller.busName);
}

void SettingsIntake::forget(const std::string& busName)
{
    ports_.withdraw(busName);
    callers_.forget(busName);
}

void SettingsIntake::change(const Caller& caller, SettingsChange wish, DaemonService::SettingsReply reply)
{
    wish.values = combined({}, wish.values, wish.fields);
    if (auto problem = problemWith(wish.values)) return reply(Refusal{Refused::invalid, *problem});
    wish.values = clamped(wish.values);
    const auto fields = machineChanges(wish) | (takesOver(wish) ? overrideAlone() : SettingsMask());
    const auto decided = [this, caller, wish, reply = std::move(reply)](const auto& refusal) {
        if (refusal) return reply(*refusal);
        auto& last = callers_.of(caller.busName);
        last.user = caller.uid;
        if (last.accepted) last.accepted = combined(*last.accepted, wish.values, wish.fields);
        takeOwn(caller, wish);
        if (takesOver(wish)) {
            quickCharge_.takeOver();
            ports_.save();
        }
        accept(caller, wish);
        reply(heldFor(caller.uid));
    };
    if (fields.none()) return decided(std::optional<Refusal>{});
    authorise(caller, "change " + listed(wish.values, fields), decided);
}

void SettingsIntake::beginTravelCharge(const Caller& caller, DaemonService::ChargingReply reply)
{
    const auto isUnderWay = [this] { return quickCharge_.isActive() && !ports_.isPaused(); };
    // A charge that begins by itself must not end a pause that a person or a hot battery asked for.
    const auto isNothingToDo = [this] { return quickCharge_.isActive() || ports_.isPaused(); };
    if (isNothingToDo()) return reply(isUnderWay());
    authorise(caller, "begin a charge before a journey",
              [this, caller, isUnderWay, isNothingToDo, reply = std::move(reply)](const auto& refusal) {
                  if (refusal) return reply(*refusal);
                  if (isNothingToDo()) return reply(isUnderWay()); // much may have come since
                  const auto before = machine();
                  quickCharge_.ask(false); // one that was fulfilled is no reason against another
                  quickCharge_.ask(true, QuickCharge::Cause::travel);
                  logChange(caller, "quick charge before a journey");
                  announce();
                  ports_.changed(caller, before);
                  reply(isUnderWay());
              });
}

void SettingsIntake::authorise(const Caller& caller, const std::string& what, const Decided& decided)
{
    ports_.authorise(caller, lifetime_.guard([this, caller, what, decided](std::optional<Refused> why) {
        if (!why) return decided(std::nullopt);
        if (why != Refused::superseded)
            refusals_.warning("Did not let " + nameOf(caller) + " " + what + ": " + phrase(*why) + ".");
        decided(Refusal{*why, "not authorised to " + what + ": " + phrase(*why)});
    }));
}

void SettingsIntake::logChange(const Caller& caller, const std::string& what)
{
    // A budget each: no author's line is left out for what another one does.
    auto& lines =
        changes_
            .try_emplace(caller.uid, ports_.loop, ports_.log, ports_.clock, category, LogBudget::manyAtOnce)
            .first->second;
    lines.info("Changed by " + nameOf(caller) + ": " + what + ".");
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
    logChange(caller, listed(wish.values, fields));
    announce();
    ports_.changed(caller, before);
}

void SettingsIntake::refuse(const Caller& caller, const ChargingSettings& message, Refused why)
{
    callers_.of(caller.busName).refused = message;
    correct(caller);
    ports_.refused(caller, why);
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
