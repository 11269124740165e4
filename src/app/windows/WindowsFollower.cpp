// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "windows/WindowsFollower.h"

#include "wire/ModelFace.h"

#include <utility>

namespace velmora {

namespace {

constexpr std::chrono::minutes interval{1};
constexpr std::chrono::seconds slack{5};

} // namespace

WindowsFollower::WindowsFollower(MainLoop& loop, sd_bus* bus, std::function<void()> ask)
    : loop_(loop),
      ask_(std::move(ask)),
      program_(
          bus, wire::windows::serviceName,
          [this] {
              ask_();
              asking_ = loop_.every(interval, ask_, slack);
          },
          [this] { asking_.reset(); })
{
}

} // namespace velmora
