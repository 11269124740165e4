// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/XEmbedIcon.h"

#include "base/Utf8.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <string>

namespace velmora {

namespace {

constexpr int firstSide = 24;                     // pixels, until the tray says otherwise
constexpr int minimumSide = 8, maximumSide = 128; // of the picture; a larger window has room around it
constexpr std::size_t maximumNameBytes = 512;
constexpr std::uint32_t requestDockOpcode = 0;              // SYSTEM_TRAY_REQUEST_DOCK
constexpr std::array<std::uint32_t, 2> embedInfoData{0, 1}; // version, XEMBED_MAPPED

const xcb_visualtype_t* findVisual(const xcb_screen_t& screen, xcb_visualid_t wanted, std::uint8_t& depth)
{
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem; xcb_depth_next(&depths))
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem;
             xcb_visualtype_next(&visuals))
            if (visuals.data->visual_id == wanted) {
                depth = depths.data->depth;
                return visuals.data;
            }
    return nullptr;
}

/// Whether a pixel of the visual is our 0x00RRGGBB or 0xAARRGGBB.
bool isWritable(const xcb_screen_t& screen, xcb_visualid_t which)
{
    std::uint8_t depth = 0;
    const auto* visual = findVisual(screen, which, depth);
    return visual && (depth == 24 || depth == 32) && visual->red_mask == 0xff0000 &&
           visual->green_mask == 0xff00 && visual->blue_mask == 0xff;
}

bool hasOurByteOrder(const xcb_setup_t& setup)
{
    const bool isLittle = setup.image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
    return isLittle == (std::endian::native == std::endian::little);
}

template <typename Event>
const Event& as(const xcb_generic_event_t& event)
{
    return reinterpret_cast<const Event&>(event);
}

unsigned channel(std::uint32_t pixel, unsigned shift)
{
    return pixel >> shift & 0xffU;
}

/// `ink` laid over `ground`, whose own transparency is kept, in the premultiplied form that X knows.
std::uint32_t blend(std::uint32_t ink, std::uint32_t ground)
{
    const unsigned alpha = channel(ink, 24);
    const auto mix = [&](unsigned over, unsigned under) {
        return (over * alpha + under * (255 - alpha) + 127) / 255;
    };
    std::uint32_t mixed = mix(255, channel(ground, 24)) << 24U;
    for (const unsigned shift : {16U, 8U, 0U})
        mixed |= mix(channel(ink, shift), channel(ground, shift)) << shift;
    return mixed;
}

Bar barLike(const std::vector<std::uint32_t>& background)
{
    std::uint64_t lightness = 0;
    for (const auto pixel : background)
        lightness += 2 * channel(pixel, 16) + 5 * channel(pixel, 8) + channel(pixel, 0);
    return lightness / 8 / background.size() > 127 ? Bar::light : Bar::dark;
}

std::size_t area(int side)
{
    return static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
}

/// Where the picture begins that lies in the middle of a window.
std::int16_t placed(int window, int side)
{
    return static_cast<std::int16_t>((window - side) / 2);
}

bool isSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value && *value;
}

} // namespace

std::unique_ptr<XEmbedIcon> XEmbedIcon::open(EventLoop& loop)
{
    if (isSet("WAYLAND_DISPLAY")) return nullptr;
    auto x = XConnection::open(loop);
    if (!x || !isWritable(x->screen(), x->screen().root_visual) || !hasOurByteOrder(*xcb_get_setup(x->get())))
        return nullptr;
    return std::unique_ptr<XEmbedIcon>(new XEmbedIcon(std::move(x)));
}

XEmbedIcon::XEmbedIcon(std::unique_ptr<XConnection> x) : x_(std::move(x))
{
    x_->onEvent = [this](const auto& event) { handle(event); };
    x_->onSettled = [this] {
        if (isStale_) draw();
    };
    x_->onLost = [this] {
        if (const auto handler = onLost) handler();
    };
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY; // for the trays that will say they are there
    xcb_change_window_attributes(x_->get(), x_->screen().root, XCB_CW_EVENT_MASK, &mask);
    internAtoms();
}

void XEmbedIcon::internAtoms()
{
    const std::array<std::string, atomCount> names{"_NET_SYSTEM_TRAY_OPCODE",
                                                   "MANAGER",
                                                   "_NET_SYSTEM_TRAY_VISUAL",
                                                   "_XEMBED_INFO",
                                                   "UTF8_STRING",
                                                   "_NET_WM_NAME",
                                                   "_NET_SYSTEM_TRAY_S" + std::to_string(x_->screenNumber())};
    for (std::size_t i = 0; i < names.size(); ++i)
        x_->ask<xcb_intern_atom_reply_t>(
            xcb_intern_atom(x_->get(), false, static_cast<std::uint16_t>(names[i].size()), names[i].c_str()),
            [this, i](const auto* reply) {
                atoms_[i] = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
                if (i == selection) seek(); // the last of them
            });
}

/// Looks who owns the tray's selection.
void XEmbedIcon::seek()
{
    x_->ask<xcb_get_selection_owner_reply_t>(
        xcb_get_selection_owner(x_->get(), atoms_[selection]),
        [this](const auto* reply) { found(reply ? reply->owner : static_cast<xcb_window_t>(XCB_NONE)); });
}

/// Asks twice: an owner that still is one after its events were selected cannot go unnoticed.
void XEmbedIcon::found(xcb_window_t owner)
{
    const bool isConfirmed = owner == manager_;
    manager_ = owner;
    if (owner == XCB_NONE || window_ != XCB_NONE) return;
    if (isConfirmed) return askForVisual();
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(x_->get(), manager_, XCB_CW_EVENT_MASK, &mask);
    seek();
}

void XEmbedIcon::askForVisual()
{
    x_->ask<xcb_get_property_reply_t>(
        xcb_get_property(x_->get(), false, manager_, atoms_[visual], XCB_ATOM_VISUALID, 0, 1),
        [this, asked = manager_](const auto* reply) {
            xcb_visualid_t wanted = XCB_NONE;
            if (reply && reply->format == 32 && xcb_get_property_value_length(reply) == sizeof wanted)
                std::memcpy(&wanted, xcb_get_property_value(reply), sizeof wanted);
            if (asked == manager_ && window_ == XCB_NONE) dock(wanted);
        });
}

void XEmbedIcon::dock(xcb_visualid_t wanted)
{
    createWindow(isWritable(x_->screen(), wanted) ? wanted : x_->screen().root_visual);
    writeName();
    requestDock();
}

void XEmbedIcon::createWindow(xcb_visualid_t wanted)
{
    auto* x = x_->get();
    findVisual(x_->screen(), wanted, depth_);
    colors_ = xcb_generate_id(x); // trays borrow it for the window that they put ours into
    xcb_create_colormap(x, XCB_COLORMAP_ALLOC_NONE, colors_, x_->screen().root, wanted);
    const std::array<std::uint32_t, 4> values{
        0, 0, XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_BUTTON_PRESS,
        colors_};
    window_ = xcb_generate_id(x);
    width_ = height_ = firstSide;
    xcb_create_window(
        x, depth_, window_, x_->screen().root, 0, 0, firstSide, firstSide, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        wanted, XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP, values.data());
    pen_ = xcb_generate_id(x);
    xcb_create_gc(x, pen_, window_, 0, nullptr);
    constexpr char classes[] = "velmora\0Velmora"; // instance and class, each with its end
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        sizeof classes, classes);
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, window_, atoms_[embedInfo], atoms_[embedInfo], 32,
                        embedInfoData.size(), embedInfoData.data());
}

void XEmbedIcon::requestDock()
{
    xcb_client_message_event_t request{};
    request.response_type = XCB_CLIENT_MESSAGE;
    request.format = 32;
    request.window = manager_;
    request.type = atoms_[opcode];
    request.data.data32[1] = requestDockOpcode;
    request.data.data32[2] = window_;
    xcb_send_event(x_->get(), false, manager_, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&request));
}

void XEmbedIcon::setDocked(bool docked)
{
    if (std::exchange(isDocked_, docked) == docked) return;
    if (const auto handler = onChanged) handler();
}

void XEmbedIcon::undock()
{
    if (window_ != XCB_NONE) xcb_destroy_window(x_->get(), window_);
    forgetWindow();
}

void XEmbedIcon::forgetWindow()
{
    if (std::exchange(window_, XCB_NONE) == XCB_NONE) return;
    xcb_free_gc(x_->get(), pen_);
    xcb_free_colormap(x_->get(), colors_);
    setDocked(false);
}

void XEmbedIcon::handle(const xcb_generic_event_t& event)
{
    switch (event.response_type & 0x7fU) { // the highest bit: sent by another client
    case XCB_CLIENT_MESSAGE:
        return messaged(as<xcb_client_message_event_t>(event));
    case XCB_DESTROY_NOTIFY:
        return destroyed(as<xcb_destroy_notify_event_t>(event).window);
    case XCB_REPARENT_NOTIFY:
        return reparented(as<xcb_reparent_notify_event_t>(event));
    case XCB_CONFIGURE_NOTIFY:
        return resized(as<xcb_configure_notify_event_t>(event));
    case XCB_EXPOSE:
        isStale_ = true;
        return;
    case XCB_BUTTON_PRESS: {
        const auto& press = as<xcb_button_press_event_t>(event);
        if (const auto handler = onActivate;
            handler && press.detail <= XCB_BUTTON_INDEX_3) // the others scroll
            handler({press.root_x, press.root_y});
        return;
    }
    default:
        return;
    }
}

/// A tray announces itself to the root window.
void XEmbedIcon::messaged(const xcb_client_message_event_t& message)
{
    if (message.window != x_->screen().root || message.type != atoms_[manager] || message.format != 32 ||
        message.data.data32[1] != atoms_[selection])
        return;
    manager_ = XCB_NONE;
    undock();
    seek();
}

void XEmbedIcon::destroyed(xcb_window_t which)
{
    if (which == window_) {
        forgetWindow();
    } else if (which == manager_) {
        manager_ = XCB_NONE;
        undock();
        seek();
    }
}

/// A tray that ends reparents the icon to the root window, where it must not be seen.
void XEmbedIcon::reparented(const xcb_reparent_notify_event_t& event)
{
    if (event.window != window_) return;
    if (event.parent == x_->screen().root) return undock();
    const std::uint32_t parentRelative = XCB_BACK_PIXMAP_PARENT_RELATIVE;
    if (depth_ != 32) xcb_change_window_attributes(x_->get(), window_, XCB_CW_BACK_PIXMAP, &parentRelative);
    setDocked(true);
}

void XEmbedIcon::resized(const xcb_configure_notify_event_t& event)
{
    if (event.window != window_) return;
    width_ = event.width;
    height_ = event.height;
    isStale_ = true;
}

/// A window without transparency shows the tray's background, whose lightness decides the ink.
void XEmbedIcon::draw()
{
    isStale_ = false;
    const int side = std::min({width_, height_, maximumSide});
    if (!isDocked_ || side < minimumSide || awaitsBackground_) return;
    if (depth_ == 32) return drawOver(std::vector<std::uint32_t>(area(side)), side, Bar::unknown);
    awaitsBackground_ = true;
    xcb_clear_area(x_->get(), false, window_, 0, 0, 0, 0);
    x_->ask<xcb_get_image_reply_t>(xcb_get_image(x_->get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window_,
                                                 placed(width_, side), placed(height_, side),
                                                 static_cast<std::uint16_t>(side),
                                                 static_cast<std::uint16_t>(side), ~0U),
                                   [this, side](const auto* image) { drawOver(image, side); });
}

void XEmbedIcon::drawOver(const xcb_get_image_reply_t* image, int side)
{
    awaitsBackground_ = false;
    if (side != std::min({width_, height_, maximumSide})) isStale_ = true;
    std::vector<std::uint32_t> background(area(side));
    const auto bytes = background.size() * sizeof background[0];
    if (isStale_ || !image || static_cast<std::size_t>(xcb_get_image_data_length(image)) < bytes)
        return; // the window is covered; an event follows when it is seen again
    std::memcpy(background.data(), xcb_get_image_data(image), bytes);
    for (auto& pixel : background) pixel |= 0xff000000U; // the bits that the screen does not use
    drawOver(background, side, barLike(background));
}

void XEmbedIcon::drawOver(const std::vector<std::uint32_t>& background, int side, Bar bar)
{
    auto pixels = drawBattery(shownPercent(state_.percentage), state_.isCharging, side, bar).pixels;
    std::ranges::transform(pixels, background, pixels.begin(), blend);
    xcb_put_image(x_->get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window_, pen_, static_cast<std::uint16_t>(side),
                  static_cast<std::uint16_t>(side), placed(width_, side), placed(height_, side), 0, depth_,
                  static_cast<std::uint32_t>(pixels.size() * sizeof pixels[0]),
                  reinterpret_cast<const std::uint8_t*>(pixels.data()));
}

/// Trays that show names show it; drawing a tooltip here would need fonts.
void XEmbedIcon::writeName()
{
    xcb_change_property(x_->get(), XCB_PROP_MODE_REPLACE, window_, atoms_[name], atoms_[utf8], 8,
                        static_cast<std::uint32_t>(state_.tooltip.size()), state_.tooltip.data());
}

void XEmbedIcon::show(const TrayState& state)
{
    const auto before = std::exchange(state_, state);
    state_.tooltip = utf8Prefix(cleanUtf8(state.tooltip), maximumNameBytes);
    if (window_ == XCB_NONE) return;
    if (before.tooltip != state_.tooltip) writeName();
    if (shownPercent(before.percentage) != shownPercent(state_.percentage) ||
        before.isCharging != state_.isCharging)
        isStale_ = true;
}

} // namespace velmora
