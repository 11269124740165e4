// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/NameOwner.h"

namespace velmora {

NameOwner::NameOwner(sd_bus* bus, const std::string& name, std::function<void()> appeared,
                     std::function<void()> gone)
    : appeared_(std::move(appeared)),
      gone_(std::move(gone)),
      changes_(dbus::watchName(bus, name, dbus::serve<NameOwner, &NameOwner::changed>, this))
{
    dbus::check(sd_bus_call_method_async(bus, out(question_), dbus::busName, dbus::busPath, dbus::busName,
                                         "GetNameOwner", dbus::serve<NameOwner, &NameOwner::answered>, this,
                                         "s", name.c_str()),
                "GetNameOwner");
}

bool NameOwner::sent(sd_bus_message* message) const
{
    const char* sender = sd_bus_message_get_sender(message);
    return sender && !owner_.empty() && sender == owner_;
}

int NameOwner::answered(sd_bus_message* reply)
{
    const char* owner = nullptr;
    if (!sd_bus_message_is_method_error(reply, nullptr) && sd_bus_message_read(reply, "s", &owner) > 0)
        owner_ = owner;
    tellIfGone();
    return 0;
}

int NameOwner::changed(sd_bus_message* signal)
{
    const auto owner = dbus::newOwner(signal);
    if (!owner) return 0;
    owner_ = *owner;
    if (owner_.empty()) {
        tellIfGone();
    } else if (const auto handler = appeared_) {
        handler();
    }
    return 0;
}

void NameOwner::tellIfGone() const
{
    if (const auto handler = gone_; handler && owner_.empty()) handler();
}

} // namespace velmora
