// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "TrayHost.h"

#include <algorithm>
#include <utility>

namespace velmora {

TrayHost::TrayHost(StatusNotifierWatcher& watcher, sd_bus* bus, TrayBar& bar,
                   std::function<void(const std::string&)> say)
    : watcher_(watcher), bus_(bus), bar_(bar), say_(std::move(say))
{
    watcher_.onChanged = [this] { follow(); };
    bar_.onClick = [this](std::uint8_t button, int x, int y) { click(button, x, y); };
}

TrayHost::~TrayHost()
{
    watcher_.onChanged = nullptr;
    bar_.onClick = nullptr;
}

/// An item that stays keeps its object, and with it its picture.
void TrayHost::follow()
{
    std::vector<std::unique_ptr<TrayItem>> now;
    for (const auto& address : watcher_.items()) {
        const auto known = std::ranges::find_if(
            items_, [&](const auto& item) { return item && item->address() == address; });
        now.push_back(known != items_.end()
                          ? std::move(*known)
                          : std::make_unique<TrayItem>(bus_, address, TrayBar::iconSize, [this] {
                                draw();
                                listen();
                            }));
    }
    items_ = std::move(now);
    std::erase_if(told_, [this](const auto& entry) {
        return std::ranges::none_of(items_, [&](const auto& item) { return item.get() == entry.first; });
    });
    draw();
    tell();
}

void TrayHost::draw()
{
    std::vector<const TrayPicture*> pictures;
    for (const auto& item : items_) pictures.push_back(&item->picture());
    bar_.show(pictures);
}

void TrayHost::listen()
{
    for (const auto& item : items_) {
        auto& told = told_[item.get()];
        if (told == item->text()) continue;
        told = item->text();
        if (!told.empty()) say_("tooltip: " + told);
    }
}

void TrayHost::tell() const
{
    const TrayLayout layout{bar_.width(), items_.size()};
    if (items_.empty()) say_("no item");
    for (std::size_t i = 0; i < layout.shown(); ++i) {
        const auto [x, y] = layout.centre(i);
        say_("item at " + std::to_string(x) + "," + std::to_string(y) + ": " + items_[i]->address().text());
    }
}

void TrayHost::click(std::uint8_t button, int x, int y)
{
    constexpr TrayItem::Click kinds[] = {TrayItem::Click::activate, TrayItem::Click::secondary,
                                         TrayItem::Click::menu};
    const auto item = TrayLayout{bar_.width(), items_.size()}.at(x);
    if (item && button >= 1 && button <= std::size(kinds)) items_[*item]->click(kinds[button - 1], x, y);
}

} // namespace velmora
