// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "TrayItem.h"

#include "base/Utf8.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

constexpr auto interface = "org.kde.StatusNotifierItem";
constexpr auto pictureList = "a(iiay)";
constexpr auto tooltip = "(sa(iiay)ss)";
constexpr std::size_t maximumText = 300; ///< bytes

const char* methodOf(TrayItem::Click kind)
{
    switch (kind) {
    case TrayItem::Click::secondary:
        return "SecondaryActivate";
    case TrayItem::Click::menu:
        return "ContextMenu";
    default:
        return "Activate";
    }
}

std::optional<TrayPicture> readPicture(sd_bus_message* reply)
{
    int width = 0, height = 0;
    const void* bytes = nullptr;
    std::size_t size = 0;
    dbus::check(sd_bus_message_enter_container(reply, 'r', "iiay"), "enter a picture");
    dbus::check(sd_bus_message_read(reply, "ii", &width, &height), "read a picture's size");
    dbus::check(sd_bus_message_read_array(reply, 'y', &bytes, &size), "read a picture");
    dbus::check(sd_bus_message_exit_container(reply), "leave a picture");
    return TrayPicture::decode(width, height, {static_cast<const std::byte*>(bytes), size});
}

TrayPicture bestPicture(sd_bus_message* reply, int size)
{
    TrayPicture best;
    dbus::check(sd_bus_message_enter_container(reply, 'a', "(iiay)"), "enter the pictures");
    while (dbus::check(sd_bus_message_at_end(reply, false), "look for a picture") == 0) {
        auto offer = readPicture(reply);
        if (offer && isBetter(*offer, best, size)) best = std::move(*offer);
    }
    dbus::check(sd_bus_message_exit_container(reply), "leave the pictures");
    return best;
}

/// What it says goes to a terminal, which obeys control characters.
std::string readTooltip(sd_bus_message* reply)
{
    const char* title = nullptr;
    const char* more = nullptr;
    dbus::check(sd_bus_message_enter_container(reply, 'r', "sa(iiay)ss"), "enter a tooltip");
    dbus::check(sd_bus_message_skip(reply, "sa(iiay)"), "skip a tooltip's pictures");
    dbus::check(sd_bus_message_read(reply, "ss", &title, &more), "read a tooltip");
    dbus::check(sd_bus_message_exit_container(reply), "leave a tooltip");
    std::string text = *title && *more ? std::string(title) + ": " + more : std::string(title) + more;
    text.resize(utf8Prefix(text, maximumText).size());
    std::ranges::replace_if(
        text, [](char one) { return (one >= 0 && one < ' ') || one == 127; }, ' ');
    return text;
}

} // namespace

TrayItem::TrayItem(sd_bus* bus, ItemAddress address, int size, std::function<void()> changed)
    : bus_(bus), address_(std::move(address)), size_(size), changed_(std::move(changed))
{
    news_ = dbus::match(bus_, {.sender = address_.connection, .path = address_.path, .interface = interface},
                        dbus::serve<TrayItem, &TrayItem::announced>, this);
    ask();
}

void TrayItem::click(Click kind, int x, int y)
{
    sd_bus_call_method_async(bus_, nullptr, address_.connection.c_str(), address_.path.c_str(), interface,
                             methodOf(kind), nullptr, nullptr, "ii", x, y);
}

void TrayItem::ask()
{
    dbus::check(sd_bus_call_method_async(bus_, out(question_), address_.connection.c_str(),
                                         address_.path.c_str(), "org.freedesktop.DBus.Properties", "GetAll",
                                         dbus::serve<TrayItem, &TrayItem::answered>, this, "s", interface),
                "GetAll");
}

int TrayItem::answered(sd_bus_message* reply)
{
    picture_ = TrayPicture::standIn(size_);
    text_.clear();
    try {
        if (!sd_bus_message_is_method_error(reply, nullptr)) read(reply);
    } catch (const std::system_error&) { // nonsense: it keeps what came before
    }
    question_.reset();
    if (std::exchange(isStale_, false)) ask();
    if (changed_) changed_();
    return 0;
}

void TrayItem::read(sd_bus_message* properties)
{
    dbus::check(sd_bus_message_enter_container(properties, 'a', "{sv}"), "enter the properties");
    while (dbus::check(sd_bus_message_enter_container(properties, 'e', "sv"), "enter a property") > 0) {
        const char* name = nullptr;
        const char* type = nullptr;
        dbus::check(sd_bus_message_read(properties, "s", &name), "read a property's name");
        dbus::check(sd_bus_message_peek_type(properties, nullptr, &type), "look at a property");
        dbus::check(sd_bus_message_enter_container(properties, 'v', type), "enter a property");
        if (name == std::string_view("IconPixmap") && type == std::string_view(pictureList)) {
            auto best = bestPicture(properties, size_);
            if (best.width > 0) picture_ = std::move(best);
        } else if (name == std::string_view("ToolTip") && type == std::string_view(tooltip)) {
            text_ = readTooltip(properties);
        } else {
            dbus::check(sd_bus_message_skip(properties, type), "skip a property");
        }
        dbus::check(sd_bus_message_exit_container(properties), "leave a property's value");
        dbus::check(sd_bus_message_exit_container(properties), "leave a property");
    }
}

/// One question at a time, however often the program changes its mind.
int TrayItem::announced(sd_bus_message*)
{
    if (question_)
        isStale_ = true;
    else
        ask();
    return 0;
}

} // namespace velmora
