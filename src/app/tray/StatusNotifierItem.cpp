// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/StatusNotifierItem.h"

#include "base/Utf8.h"
#include "tray/TrayMenu.h"

#include <array>
#include <cerrno>
#include <utility>

namespace velmora {

namespace {

constexpr auto interface = "org.kde.StatusNotifierItem";
constexpr auto watcherName = "org.kde.StatusNotifierWatcher"; // its interface, too
constexpr auto watcherPath = "/StatusNotifierWatcher";
constexpr auto portalName = "org.freedesktop.portal.Desktop";
constexpr auto appearance = "org.freedesktop.appearance"; // a space of the portal's settings
constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties";

constexpr std::array pictureSizes{16, 22, 24, 32, 48};
constexpr std::size_t maximumTokenBytes = 512;
constexpr std::chrono::milliseconds pauseBetweenQuestions{250};
constexpr std::uint64_t maximumUnsent =
    64; ///< unsent messages; above that the pictures, 18 KB each time, are not sent

constexpr std::pair<std::string_view, const char*> constantTexts[] = {
    {"Category", "Hardware"},
    {"Id", "velmora"},
    {"Title", "Velmora"},
    {"Status", "Active"},
    {"OverlayIconName", ""},
    {"AttentionIconName", ""},
    {"AttentionAccessibleDesc", ""},
};

template <int (StatusNotifierItem::*Method)(sd_bus_message*)>
constexpr sd_bus_message_handler_t served = dbus::serve<StatusNotifierItem, Method>;

dbus::Message callToWatcher(sd_bus* bus, const char* calledInterface, const char* member)
{
    return dbus::newCall(bus, watcherName, watcherPath, calledInterface, member);
}

/// Network byte order, as ARGB32.
std::vector<std::uint8_t> bytesOf(const BatteryPicture& picture)
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(picture.pixels.size() * 4);
    for (const auto pixel : picture.pixels)
        for (const unsigned shift : {24U, 16U, 8U, 0U})
            bytes.push_back(static_cast<std::uint8_t>(pixel >> shift & 0xffU));
    return bytes;
}

} // namespace

const sd_bus_vtable StatusNotifierItem::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("Activate", SD_BUS_ARGS("i", x, "i", y), SD_BUS_NO_RESULT,
                            served<&StatusNotifierItem::activate>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("SecondaryActivate", SD_BUS_ARGS("i", x, "i", y), SD_BUS_NO_RESULT,
                            served<&StatusNotifierItem::activate>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("ContextMenu", SD_BUS_ARGS("i", x, "i", y), SD_BUS_NO_RESULT,
                            served<&StatusNotifierItem::activate>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("Scroll", SD_BUS_ARGS("i", delta, "s", orientation), SD_BUS_NO_RESULT,
                            served<&StatusNotifierItem::scroll>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("ProvideXdgActivationToken", SD_BUS_ARGS("s", token), SD_BUS_NO_RESULT,
                            served<&StatusNotifierItem::provideActivationToken>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("Category", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Id", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Title", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Status", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("WindowId", "i", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconThemePath", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconName", "s", property, 0, 0), // its changes have signals in this interface
    SD_BUS_PROPERTY("IconPixmap", "a(iiay)", property, 0, 0),
    SD_BUS_PROPERTY("IconAccessibleDesc", "s", property, 0, 0),
    SD_BUS_PROPERTY("AttentionAccessibleDesc", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("OverlayIconName", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("AttentionIconName", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("ToolTip", "(sa(iiay)ss)", property, 0, 0),
    SD_BUS_PROPERTY("ItemIsMenu", "b", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Menu", "o", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_SIGNAL("NewIcon", "", 0),
    SD_BUS_SIGNAL("NewToolTip", "", 0),
    SD_BUS_VTABLE_END,
};

StatusNotifierItem::StatusNotifierItem(MainLoop& loop, sd_bus* bus, Log& log, const std::string& icons)
    : loop_(loop),
      bus_(bus),
      complaints_(log, "StatusNotifierItem"),
      icons_(cleanUtf8(icons)),
      portal_(bus, portalName)
{
    dbus::check(sd_bus_add_object_vtable(bus_, out(object_), path, interface, vtable_, this), interface);
    disconnection_ = dbus::onDisconnected(bus_, served<&StatusNotifierItem::disconnected>, this);
    watcherChanges_ = dbus::watchName(bus_, watcherName, served<&StatusNotifierItem::watcherChanged>, this);
    const auto follow = [this](const char* member) {
        return dbus::match(bus_, {.sender = watcherName, .interface = watcherName, .member = member},
                           served<&StatusNotifierItem::hostsChanged>, this);
    };
    hostCame_ = follow("StatusNotifierHostRegistered");
    hostLeft_ = follow("StatusNotifierHostUnregistered");
    settings_ = dbus::match(bus_,
                            {.sender = portalName,
                             .interface = "org.freedesktop.portal.Settings",
                             .member = "SettingChanged",
                             .arg0 = appearance},
                            served<&StatusNotifierItem::settingChanged>, this);
    announce(); // after the match: no watcher can come between unseen
}

void StatusNotifierItem::announce()
{
    const auto call = callToWatcher(bus_, watcherName, "RegisterStatusNotifierItem");
    dbus::check(sd_bus_message_append(call.get(), "s", path), "RegisterStatusNotifierItem");
    registration_ = dbus::ask(bus_, call, served<&StatusNotifierItem::registered>, this);
}

/// One question at a time and a few a second, however often a watcher says that something changed.
void StatusNotifierItem::askForHost()
{
    isQuestionDue_ = question_ || pause_;
    if (isQuestionDue_) return;
    const auto call = callToWatcher(bus_, propertiesInterface, "Get");
    dbus::check(sd_bus_message_append(call.get(), "ss", watcherName, "IsStatusNotifierHostRegistered"),
                "Get");
    if (sd_bus_call_async(bus_, out(question_), call.get(), served<&StatusNotifierItem::hostAnswered>, this,
                          0) < 0)
        return; // the bus is going: `disconnected` follows
    pause_ = loop_.after(pauseBetweenQuestions, [this] {
        pause_.reset();
        if (isQuestionDue_) askForHost();
    });
}

int StatusNotifierItem::registered(sd_bus_message* reply)
{
    if (const auto* error = sd_bus_message_get_error(reply)) {
        if (!sd_bus_error_has_names(error, SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER))
            // Never settled: a watcher that refuses over and over is logged once.
            complaints_.raise("refused", std::string("The desktop's tray refused the icon: ") +
                                             (error->message ? error->message : error->name) + ".");
        return 0;
    }
    const char* sender = sd_bus_message_get_sender(reply);
    watcher_ = sender ? sender : "";
    isRegistered_ = true;
    askForHost();
    return 0;
}

/// Without this property, assume that the watcher draws items itself.
int StatusNotifierItem::hostAnswered(sd_bus_message* reply)
{
    int hasHost = true;
    sd_bus_message_read(reply, "v", "b", &hasHost);
    question_.reset();
    if (isQuestionDue_) askForHost();
    if (std::exchange(hasHost_, hasHost != 0) == hasHost_) return 0;
    if (const auto handler = onChanged) handler();
    return 0;
}

/// Any peer may send us any signal; only the watcher's counts.
int StatusNotifierItem::hostsChanged(sd_bus_message* signal)
{
    const char* sender = sd_bus_message_get_sender(signal);
    if (isRegistered_ && sender && sender == watcher_) askForHost();
    return 0;
}

int StatusNotifierItem::watcherChanged(sd_bus_message* signal)
{
    const auto owner = dbus::newOwner(signal);
    if (!owner) return 0;
    lose();
    if (!owner->empty()) announce();
    return 0;
}

int StatusNotifierItem::disconnected(sd_bus_message*)
{
    lose();
    return 0;
}

void StatusNotifierItem::lose()
{
    const bool wasShown = isShown();
    isRegistered_ = hasHost_ = isQuestionDue_ = false;
    watcher_.clear();
    registration_.reset();
    question_.reset();
    pause_.reset();
    if (const auto handler = onChanged; wasShown && handler) handler();
}

void StatusNotifierItem::tell(const char* signal) const
{
    if (isRegistered_) sd_bus_emit_signal(bus_, path, interface, signal, nullptr);
}

int StatusNotifierItem::settingChanged(sd_bus_message* signal)
{
    const char *space = nullptr, *key = nullptr;
    if (!portal_.sent(signal) || sd_bus_message_read(signal, "ss", &space, &key) < 0) return 0;
    if (space == std::string_view(appearance) && key == std::string_view("color-scheme")) tell("NewIcon");
    return 0;
}

void StatusNotifierItem::show(const TrayState& state)
{
    const auto before = std::exchange(state_, state);
    if (shownPercent(before.percentage) != shownPercent(state.percentage) ||
        before.isCharging != state.isCharging) {
        pictures_.clear();
        tell("NewIcon");
    }
    if (before.tooltip != state.tooltip) tell("NewToolTip");
}

int StatusNotifierItem::activate(sd_bus_message* call)
{
    ScreenPoint at;
    dbus::check(sd_bus_message_read(call, "ii", &at.x, &at.y), "read a place");
    const int sent = sd_bus_reply_method_return(call, nullptr);
    const bool isKnown = at != ScreenPoint{}; // some that do not send 0, 0
    if (const auto handler = onActivate) handler(isKnown ? std::optional(at) : std::nullopt);
    return sent;
}

int StatusNotifierItem::scroll(sd_bus_message* call)
{
    return sd_bus_reply_method_return(call, nullptr);
}

int StatusNotifierItem::provideActivationToken(sd_bus_message* call)
{
    const char* token = nullptr;
    dbus::check(sd_bus_message_read(call, "s", &token), "read a token");
    activationToken_ = token;
    if (activationToken_.size() > maximumTokenBytes) activationToken_.clear();
    return sd_bus_reply_method_return(call, nullptr);
}

std::string StatusNotifierItem::iconName() const
{
    return icons_.empty() ? "" : trayIconName(shownPercent(state_.percentage), state_.isCharging);
}

/// Drawn once and kept: a flood of requests costs little.
const StatusNotifierItem::Pictures& StatusNotifierItem::pictures()
{
    if (pictures_.empty())
        for (const int size : pictureSizes)
            pictures_.emplace_back(size, bytesOf(drawBattery(shownPercent(state_.percentage),
                                                             state_.isCharging, size, Bar::unknown)));
    return pictures_;
}

int StatusNotifierItem::appendPictures(sd_bus_message* reply)
{
    std::uint64_t unsent = 0;
    dbus::check(sd_bus_get_n_queued_write(bus_, &unsent), "look at the queue");
    dbus::check(sd_bus_message_open_container(reply, 'a', "(iiay)"), "open pictures");
    for (const auto& [size, bytes] : pictures()) {
        if (unsent > maximumUnsent) break;
        dbus::check(sd_bus_message_open_container(reply, 'r', "iiay"), "open a picture");
        dbus::check(sd_bus_message_append(reply, "ii", size, size), "append a picture");
        dbus::check(sd_bus_message_append_array(reply, 'y', bytes.data(), bytes.size()), "append a picture");
        dbus::check(sd_bus_message_close_container(reply), "close a picture");
    }
    return dbus::check(sd_bus_message_close_container(reply), "close pictures");
}

int StatusNotifierItem::answer(std::string_view property, sd_bus_message* reply)
{
    const auto append = [&](const char* type, auto value) {
        return sd_bus_message_append(reply, type, value);
    };
    for (const auto& [name, text] : constantTexts)
        if (name == property) return append("s", text);
    if (property == "IconName") return append("s", iconName().c_str());
    if (property == "IconAccessibleDesc") return append("s", cleanUtf8(state_.tooltip).c_str());
    if (property == "IconPixmap") return appendPictures(reply);
    if (property == "IconThemePath") return append("s", icons_.c_str());
    if (property == "Menu") return append("o", TrayMenu::path);
    if (property == "ItemIsMenu") return append("b", false);
    if (property == "WindowId") return append("i", 0);
    return sd_bus_message_append(reply, "(sa(iiay)ss)", "", 0U, "Velmora", cleanUtf8(state_.tooltip).c_str());
}

int StatusNotifierItem::property(sd_bus*, const char*, const char*, const char* property,
                                 sd_bus_message* reply, void* self, sd_bus_error* error) noexcept
try {
    return static_cast<StatusNotifierItem*>(self)->answer(property, reply);
} catch (const std::exception& failure) {
    return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, failure.what());
}

} // namespace velmora
