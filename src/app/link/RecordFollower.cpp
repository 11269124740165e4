// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/RecordFollower.h"

#include "bus/Records.h"
#include "wire/VelmoraProtocol.h"

#include <system_error>
#include <utility>

namespace velmora {

namespace {

constexpr std::chrono::seconds retryDelay{10};

dbus::SignalRule rule(const RecordFollower::Source& source)
{
    return {.sender = wire::serviceName,
            .path = wire::objectPath,
            .interface = source.interface,
            .member = source.signal,
            .arg0 = source.of ? source.of : ""};
}

} // namespace

RecordFollower::RecordFollower(MainLoop& loop, sd_bus* bus, const NameOwner& daemon, Complaints& complaints,
                               const Source& source)
    : loop_(loop),
      bus_(bus),
      daemon_(daemon),
      complaints_(complaints),
      source_(source),
      action_(std::string("read ") + source.name),
      changes_(dbus::match(bus, rule(source), dbus::serve<RecordFollower, &RecordFollower::changed>, this))
{
    fetch();
}

void RecordFollower::fetch()
try {
    forget();
    const auto call =
        dbus::newCall(bus_, wire::serviceName, wire::objectPath, source_.interface, source_.method);
    if (source_.of) dbus::check(sd_bus_message_append(call.get(), "s", source_.of), action_.c_str());
    question_ = dbus::ask(bus_, call, dbus::serve<RecordFollower, &RecordFollower::answered>, this);
} catch (const std::system_error& failure) {
    complain(failure.what());
}

void RecordFollower::forget()
{
    question_.reset();
    retry_.reset();
    record_.reset();
}

int RecordFollower::answered(sd_bus_message* reply)
{
    const auto answer = std::move(question_);
    if (const auto* error = sd_bus_message_get_error(reply)) {
        if (!daemon_.exists()) return 0; // asked again once it appears
        complain(dbus::textOf(*error));
        retry_ = loop_.after(retryDelay, [this] { fetch(); });
        return 0;
    }
    if (const auto values = read(reply)) set(*values, *values, Told::inAnswer);
    return 0;
}

int RecordFollower::changed(sd_bus_message* signal)
{
    if (!daemon_.sent(signal)) return 0;
    if (!record_) {
        if (!question_) fetch(); // else the answer that is on its way says it
        return 0;
    }
    if (source_.of) dbus::check(sd_bus_message_skip(signal, "s"), action_.c_str());
    if (const auto values = read(signal)) {
        auto whole = *record_;
        whole.update(*values);
        const bool isForOne = sd_bus_message_get_destination(signal) != nullptr;
        set(std::move(whole), *values, isForOne ? Told::inAnswer : Told::toAll);
    }
    return 0;
}

std::optional<KeyedArchive> RecordFollower::read(sd_bus_message* message)
try {
    auto values = dbus::readArchive(message);
    complaints_.settle(action_);
    return values;
} catch (const std::system_error& failure) {
    complain(failure.what());
    return std::nullopt;
}

void RecordFollower::complain(const std::string& why)
{
    complaints_.raise(action_, "Could not " + action_ + ": " + why + ".");
}

/// Nothing comes after it: who is told may destroy the follower.
void RecordFollower::set(KeyedArchive record, const KeyedArchive& news, Told told)
{
    record_ = std::move(record);
    if (const auto handler = onChange) handler(news, told);
}

} // namespace velmora
