// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/XPCClient.h"

#include "bus/Records.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

namespace velmora {

/// Waits for an answer; erased with it, so that nothing calls a client that is gone.
struct XPCClient::PendingCall {
    XPCClient& client;
    ReplyHandler handler;
    std::function<void()> failed;
    std::list<PendingCall>::iterator self{};
    dbus::Slot slot{};

    int answered(sd_bus_message* reply)
    {
        const auto complete = std::move(handler);
        const auto giveUp = std::move(failed);
        client.calls_.erase(self); // `this` goes here, the client perhaps in the next line
        if (!sd_bus_message_is_method_error(reply, nullptr))
            complete(reply);
        else if (giveUp)
            giveUp();
        return 0;
    }
};

/// A history on its way out of its message, a slice a turn: a hundred thousand samples do not hold up the
/// loop.
struct XPCClient::HistoryReading {
    static constexpr int slice = 500; // about a millisecond

    std::shared_ptr<sd_bus_message> reply;
    HistoryHandler completion;
    Date now;
    std::vector<HSHistorySnapshot> samples{};

    bool readSlice() ///< whether that was all
    {
        for (int read = 0; read < slice; ++read) {
            if (dbus::check(sd_bus_message_at_end(reply.get(), false), "read a history")) return true;
            samples.emplace_back(dbus::readArchive(reply.get()), now);
        }
        return false;
    }
};

XPCClient::XPCClient(EventLoop& loop, const Clock& clock, Log& log)
    : loop_(loop), clock_(clock), log_(log), complaints_(log, "XPCClient")
{
    attempt("connect to the daemon", [&] { connect(loop); });
    isDaemonMissing_ = !bus_;
}

XPCClient::~XPCClient() = default;

void XPCClient::connect(const EventLoop& loop)
{
    bus_ = dbus::openSystemBus(loop);
    matches_.push_back(
        dbus::onDisconnected(bus_.get(), dbus::serve<XPCClient, &XPCClient::disconnected>, this));
    followDaemon();
}

void XPCClient::followDaemon()
{
    const auto appeared = [this] {
        const auto handler = onDaemonAppeared;
        forgetRecords();
        chargerRecord_->fetch();
        settingsRecord_->fetch();
        setDaemonMissing(false);
        if (handler) handler();
    };
    const auto gone = [this] {
        forgetRecords();
        setDaemonMissing(true);
    };
    daemon_.emplace(bus_.get(), wire::serviceName, appeared, gone);
    followRecords();
    follow(wire::client_protocol::interface, wire::client_protocol::batteryStateDidChange,
           dbus::serve<XPCClient, &XPCClient::statePushed>);
    follow(wire::charger::interface, wire::charger::changeRefused,
           dbus::serve<XPCClient, &XPCClient::changeRefused>);
    follow(wire::charger::interface, wire::charger::occurred, dbus::serve<XPCClient, &XPCClient::occurred>);
}

void XPCClient::follow(const char* interface, const wire::Message& signal, sd_bus_message_handler_t handler)
{
    matches_.push_back(dbus::match(bus_.get(),
                                   {.sender = wire::serviceName,
                                    .path = wire::objectPath,
                                    .interface = interface,
                                    .member = signal.member()},
                                   handler, this));
}

void XPCClient::followRecords()
{
    constexpr RecordFollower::Source chargerSource{.name = "the charger's properties",
                                                   .interface = "org.freedesktop.DBus.Properties",
                                                   .method = "GetAll",
                                                   .signal = "PropertiesChanged",
                                                   .of = wire::charger::interface};
    constexpr RecordFollower::Source settingsSource{.name = "the settings",
                                                    .interface = wire::charger::interface,
                                                    .method = wire::charger::getSettings.selector,
                                                    .signal = wire::charger::settingsChanged.selector};
    chargerRecord_.emplace(loop_, bus_.get(), *daemon_, complaints_, chargerSource);
    chargerRecord_->onChange = [this](const KeyedArchive&, auto) { takeCharger(); };
    settingsRecord_.emplace(loop_, bus_.get(), *daemon_, complaints_, settingsSource);
    settingsRecord_->onChange = [this](const KeyedArchive& news, auto told) { takeSettings(news, told); };
}

void XPCClient::takeCharger()
{
    auto report = ChargerReport::unarchived(*chargerRecord_->record());
    if (charger_ == report) return;
    charger_ = std::move(report);
    if (const auto handler = onChargerChange) handler();
}

void XPCClient::forgetRecords()
{
    state_.reset();
    charger_.reset();
    settings_.reset();
    told_.reset();
    sentLast_.reset();
    asked_.reset();
    if (chargerRecord_) chargerRecord_->forget();
    if (settingsRecord_) settingsRecord_->forget();
}

/// A change of one setting says nothing of another that was just sent and is not answered yet.
void XPCClient::takeSettings(const KeyedArchive& news, RecordFollower::Told how)
{
    const auto told = unarchivedSettings(news);
    SettingsMask fields;
    for (std::size_t i = 0; i < allSettings.size(); ++i)
        fields[i] = news.find(allSettings[i].name) != nullptr;
    if (sentLast_ && (differing(*sentLast_, told) & fields).any()) sentLast_.reset();
    told_ = {.held = unarchivedSettings(*settingsRecord_->record()),
             .isAnswer = how == RecordFollower::Told::inAnswer};
    if (settings_ && !told_->isAnswer) told_->byOthers = differing(*settings_, told) & fields;
    settings_ = settings_ ? combined(*settings_, told, fields) : told;
    if (asked_ == told_->held) asked_.reset();
    toldLast_ = fields;
    if (const auto handler = onSettingsChange) handler();
}

void XPCClient::setDaemonMissing(bool isMissing)
{
    isDaemonMissing_ = isMissing;
    if (const auto handler = onDaemonPresence) handler();
}

dbus::Message XPCClient::newCall(const wire::Message& message) const
{
    return dbus::newCall(bus_.get(), wire::serviceName, wire::objectPath, wire::daemon_protocol::interface,
                         message.member().c_str());
}

void XPCClient::send(dbus::Message call, ReplyHandler handler, const std::function<void()>& failed)
{
    const auto pending = calls_.insert(calls_.end(), PendingCall{*this, std::move(handler), failed});
    pending->self = pending;
    try {
        pending->slot =
            dbus::ask(bus_.get(), call, dbus::serve<PendingCall, &PendingCall::answered>, &*pending);
    } catch (const std::system_error&) {
        calls_.erase(pending); // a lost bus was logged when it was lost
        if (failed) failed();
    }
}

template <typename Action>
void XPCClient::attempt(const std::string& action, Action&& act)
try {
    act();
    complaints_.settle(action);
} catch (const std::system_error& failure) {
    complaints_.raise(action, "Could not " + action + ": " + failure.what() + ".");
}

bool XPCClient::isWellFormed(sd_bus_message* message, const char* what, const char* signature)
{
    if (sd_bus_message_has_signature(message, signature) > 0) {
        complaints_.settle(what);
        return true;
    }
    const char* actual = sd_bus_message_get_signature(message, true);
    complaints_.raise(what, std::string("Ignored ") + what + " of the daemon: its type is \"" +
                                (actual ? actual : "") + "\" instead of \"" + signature + "\".");
    return false;
}

std::optional<HSBatteryState> XPCClient::readState(sd_bus_message* message, const char* what)
{
    std::optional<HSBatteryState> state;
    if (isWellFormed(message, what, wire::recordType))
        attempt(std::string("read ") + what, [&] { state.emplace(dbus::readArchive(message)); });
    return state;
}

void XPCClient::beginTravelCharge(const std::function<void(bool)>& completion)
{
    const auto& wanted = wire::charger::beginTravelCharge;
    if (!bus_) return completion(false);
    const auto refused = [completion] { completion(false); };
    const auto answered = [this, completion](sd_bus_message* reply) {
        int isBegun = 0;
        if (isWellFormed(reply, "an answer about a charge", wire::Message::signature(wanted.reply).c_str()))
            dbus::check(sd_bus_message_read(reply, "b", &isBegun), "read an answer");
        completion(isBegun != 0);
    };
    send(dbus::newCall(bus_.get(), wire::serviceName, wire::objectPath, wire::charger::interface,
                       wanted.selector),
         answered, refused);
}

void XPCClient::fetchCurrentState(StateHandler completion)
{
    if (!bus_) return;
    attempt("ask for the state", [&] {
        send(newCall(wire::daemon_protocol::getBatteryState), [this, completion](sd_bus_message* reply) {
            if (const auto state = readState(reply, "a state")) {
                state_ = state;
                completion(*state);
            }
        });
    });
}

void XPCClient::fetchHistory(HistoryHandler completion)
{
    if (!bus_) return;
    attempt("ask for the history", [&] {
        send(newCall(wire::daemon_protocol::getAnalyticsHistory), [this, completion](sd_bus_message* reply) {
            if (!isWellFormed(reply, "a history", wire::recordListType)) return;
            dbus::check(sd_bus_message_enter_container(reply, 'a', wire::recordType), "read a history");
            HistoryReading reading{dbus::keep(reply), completion, clock_.now()};
            readOn(readings_.emplace_back(std::make_shared<HistoryReading>(std::move(reading))));
        });
    });
}

void XPCClient::readOn(const std::weak_ptr<HistoryReading>& weak)
{
    const auto reading = weak.lock();
    if (!reading) return;
    bool isWhole = false;
    bool isBroken = true;
    attempt("read a history", [&] {
        isWhole = reading->readSlice();
        isBroken = false;
    });
    if (!isWhole && !isBroken)
        return loop_.post([this, weak] {
            if (!weak.expired()) readOn(weak);
        });
    readings_.remove(reading);
    if (isWhole) reading->completion(std::move(reading->samples));
}

void XPCClient::updateSettings(const ChargingSettings& settings)
{
    if (!settings_) return;
    settings_ = settings;
    if (sentLast_ == settings) return;
    if (isPersonsWish_) {
        asked_ = told_ && told_->held == settings ? std::nullopt : std::optional(settings);
        setRefusal("");
    }
    attempt("send the settings", [&] {
        const auto call = newCall(wire::daemon_protocol::updateSettings);
        dbus::check(sd_bus_message_set_expect_reply(call.get(), false), "one way");
        dbus::check(sd_bus_message_set_allow_interactive_authorization(call.get(), isPersonsWish_), "a wish");
        dbus::append(call.get(), settings);
        sd_bus_send(bus_.get(), call.get(), nullptr); // a lost bus was logged when it was lost
        sentLast_ = settings;
    });
}

int XPCClient::statePushed(sd_bus_message* signal)
{
    if (!daemon_->sent(signal)) return 0;
    const auto state = readState(signal, "a push");
    if (state) state_ = state;
    if (const auto handler = onStateChange; handler && state) handler(*state);
    return 0;
}

void XPCClient::asPerson(const std::function<void()>& act)
{
    struct Restore {
        bool& flag;
        bool before;
        ~Restore() { flag = before; }
    } restore{isPersonsWish_, std::exchange(isPersonsWish_, true)};
    act();
}

int XPCClient::changeRefused(sd_bus_message* signal)
{
    if (!daemon_->sent(signal) || !std::exchange(asked_, std::nullopt)) return 0;
    const char* given = nullptr;
    dbus::check(sd_bus_message_read(signal, "s", &given), "read a refusal");
    const auto* why = std::ranges::find(refusedTexts, std::string_view(given));
    setRefusal(why == refusedTexts.end() ? textOf(Refused::denied) : *why);
    return 0;
}

/// What is none is never settled: a daemon of another version may tell good and unknown ones in turn.
int XPCClient::occurred(sd_bus_message* signal)
{
    if (!daemon_->sent(signal)) return 0;
    std::optional<ChargeEvent> event;
    if (sd_bus_message_has_signature(signal, wire::recordType) > 0)
        event = ChargeEvent::unarchived(dbus::readArchive(signal));
    if (!event)
        complaints_.raise("no event", "Ignored an event of the daemon, of a kind that is not known here or "
                                      "without its value. Further ones are ignored without a line.");
    else if (const auto handler = onEvent)
        handler(*event);
    return 0;
}

/// One line in the log for each time that a person tries.
void XPCClient::setRefusal(const std::string& why)
{
    constexpr auto cause = "change refused";
    if (why.empty())
        complaints_.settle(cause);
    else
        complaints_.raise(cause, "The daemon refused to change the charger's settings: " + why + ".");
    if (std::exchange(refusal_, why) == why) return;
    if (const auto handler = onRefusal) handler();
}

int XPCClient::disconnected(sd_bus_message*)
{
    log_.warning("XPCClient",
                 "The system bus hung up: the daemon is out of reach until Velmora starts again.");
    forgetRecords();
    setDaemonMissing(true);
    return 0;
}

} // namespace velmora
