// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/SecretSession.h"

#include <cerrno>
#include <poll.h>
#include <string_view>
#include <system_error>

namespace velmora {

namespace {

using dbus::check;
constexpr auto itemInterface = "org.freedesktop.Secret.Item";
constexpr auto collectionInterface = "org.freedesktop.Secret.Collection";
constexpr auto defaultCollection = "/org/freedesktop/secrets/aliases/default";
constexpr std::string_view noPrompt = "/"; // any other path is a question to the user

[[noreturn]] void fail(int error, const char* what)
{
    throw std::system_error(error, std::generic_category(), what);
}

void appendAttributes(sd_bus_message* call, const std::string& service, const std::string& account)
{
    check(sd_bus_message_append(call, "a{ss}", 2, "service", service.c_str(), "account", account.c_str()),
          "attributes");
}

/// A label is what password managers show the item under.
void appendProperties(sd_bus_message* call, const std::string& service, const std::string& account)
{
    check(sd_bus_message_open_container(call, 'a', "{sv}"), "properties");
    check(sd_bus_message_append(call, "{sv}", "org.freedesktop.Secret.Item.Label", "s", service.c_str()),
          "label");
    check(sd_bus_message_open_container(call, 'e', "sv"), "properties");
    check(sd_bus_message_append(call, "s", "org.freedesktop.Secret.Item.Attributes"), "properties");
    check(sd_bus_message_open_container(call, 'v', "a{ss}"), "attributes");
    appendAttributes(call, service, account);
    for (int level = 0; level < 3; ++level) check(sd_bus_message_close_container(call), "properties");
}

void appendSecret(sd_bus_message* call, const std::string& session, std::string_view secret)
{
    check(sd_bus_message_open_container(call, 'r', "oayays"), "secret");
    check(sd_bus_message_append(call, "oay", session.c_str(), 0), "session");
    check(sd_bus_message_append_array(call, 'y', secret.data(), secret.size()), "secret");
    check(sd_bus_message_append(call, "s", "text/plain; charset=utf8"), "secret");
    check(sd_bus_message_close_container(call), "secret");
}

int keepReply(sd_bus_message* reply, void* kept, sd_bus_error*)
{
    static_cast<dbus::Message*>(kept)->reset(sd_bus_message_ref(reply));
    return 1;
}

} // namespace

SecretSession::SecretSession(Clock::time_point deadline, int cancelled)
    : deadline_(deadline), cancelled_(cancelled)
{
    check(sd_bus_open_user(out(bus_)), "cannot reach the session bus");
}

dbus::Message SecretSession::newCall(const char* path, const char* interface, const char* member) const
{
    auto call = dbus::newCall(bus_.get(), serviceName, path, interface, member);
    check(sd_bus_message_set_auto_start(call.get(), true), member);
    return call;
}

void SecretSession::waitForBus() const
{
    using namespace std::chrono;
    const auto left = ceil<milliseconds>(deadline_ - Clock::now()).count();
    if (left <= 0) fail(ETIMEDOUT, "the secret service");
    const int events = check(sd_bus_get_events(bus_.get()), "sd_bus_get_events");
    pollfd waited[]{{.fd = sd_bus_get_fd(bus_.get()), .events = static_cast<short>(events), .revents = 0},
                    {.fd = cancelled_, .events = POLLIN, .revents = 0}};
    if (poll(waited, std::size(waited), static_cast<int>(left)) < 0 && errno != EINTR) fail(errno, "poll");
    if (waited[1].revents != 0) fail(ECANCELED, "the secret service");
}

/// sd_bus_call would wait without end for a bus that does not answer the greeting.
dbus::Message SecretSession::ask(const dbus::Message& call)
{
    dbus::Message reply;
    const auto question = dbus::ask(bus_.get(), call, keepReply, &reply);
    while (!reply) {
        const bool isBusy = check(sd_bus_process(bus_.get(), nullptr), "the secret service") > 0;
        if (reply) break;
        if (!isBusy)
            waitForBus();
        else if (Clock::now() > deadline_)
            fail(ETIMEDOUT, "the secret service");
    }
    check(sd_bus_message_sensitive(reply.get()), "sd_bus_message_sensitive");
    if (sd_bus_message_is_method_error(reply.get(), nullptr) > 0)
        fail(sd_bus_message_get_errno(reply.get()), "the secret service");
    return reply;
}

const std::string& SecretSession::session()
{
    if (!session_.empty()) return session_;
    const auto call = newCall(servicePath, serviceInterface, "OpenSession");
    check(sd_bus_message_append(call.get(), "sv", "plain", "s", ""), "OpenSession");
    const auto reply = ask(call);
    const char* path = nullptr;
    check(sd_bus_message_skip(reply.get(), "v"), "OpenSession");
    check(sd_bus_message_read(reply.get(), "o", &path), "OpenSession");
    return session_ = path;
}

std::vector<std::string> SecretSession::find(const std::string& service, const std::string& account)
{
    const auto call = newCall(servicePath, serviceInterface, "SearchItems");
    appendAttributes(call.get(), service, account);
    const auto reply = ask(call);
    check(sd_bus_message_enter_container(reply.get(), 'a', "o"), "SearchItems");
    std::vector<std::string> items;
    const char* item = nullptr;
    while (items.size() < maximumItems && check(sd_bus_message_read(reply.get(), "o", &item), "item") > 0)
        items.emplace_back(item);
    if (!items.empty()) return items;
    check(sd_bus_message_exit_container(reply.get()), "SearchItems");
    check(sd_bus_message_enter_container(reply.get(), 'a', "o"), "SearchItems");
    if (check(sd_bus_message_read(reply.get(), "o", &item), "item") > 0) fail(EACCES, "a locked item");
    return items;
}

bool SecretSession::isLocked()
{
    const auto call = newCall(defaultCollection, "org.freedesktop.DBus.Properties", "Get");
    check(sd_bus_message_append(call.get(), "ss", collectionInterface, "Locked"), "Locked");
    int isLocked = 0;
    check(sd_bus_message_read(ask(call).get(), "v", "b", &isLocked), "Locked");
    return isLocked != 0;
}

std::string SecretSession::secretOf(const std::string& item)
{
    const auto call = newCall(item.c_str(), itemInterface, "GetSecret");
    check(sd_bus_message_append(call.get(), "o", session().c_str()), "GetSecret");
    const auto reply = ask(call);
    check(sd_bus_message_enter_container(reply.get(), 'r', "oayays"), "GetSecret");
    check(sd_bus_message_skip(reply.get(), "oay"), "GetSecret");
    const void* bytes = nullptr;
    std::size_t size = 0;
    check(sd_bus_message_read_array(reply.get(), 'y', &bytes, &size), "GetSecret");
    if (size > maximumBytes) fail(EFBIG, "GetSecret");
    return {static_cast<const char*>(bytes), size};
}

bool SecretSession::store(const std::string& service, const std::string& account, std::string_view secret)
{
    const auto call = newCall(defaultCollection, collectionInterface, "CreateItem");
    check(sd_bus_message_sensitive(call.get()), "sd_bus_message_sensitive");
    appendProperties(call.get(), service, account);
    appendSecret(call.get(), session(), secret);
    check(sd_bus_message_append(call.get(), "b", true), "CreateItem");
    const auto reply = ask(call);
    const char* prompt = nullptr;
    check(sd_bus_message_read(reply.get(), "oo", nullptr, &prompt), "CreateItem");
    return prompt == noPrompt;
}

bool SecretSession::remove(const std::string& item)
{
    const auto reply = ask(newCall(item.c_str(), itemInterface, "Delete"));
    const char* prompt = nullptr;
    check(sd_bus_message_read(reply.get(), "o", &prompt), "Delete");
    return prompt == noPrompt;
}

} // namespace velmora
