// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Observable.h"

#include <gtest/gtest.h>
#include <string>

namespace velmora {

namespace {

TEST(Observable, EveryAssignmentIsToldInOrderAndBeforeItIsStored)
{
    std::string told;
    Signal<> willChange;
    Observable<int>* self = nullptr;
    Observable<int> value{1, &willChange, [&] { told += "set:" + std::to_string(self->get()) + " "; }};
    self = &value;
    const auto model = willChange.observe([&] { told += "will "; });
    const auto one = value.observe(
        [&](int incoming) { told += std::to_string(value.get()) + "->" + std::to_string(incoming) + " "; });
    value.set(2);
    value.set(2);
    EXPECT_EQ(told, "will 1->2 set:2 will 2->2 set:2 ");
}

TEST(Observable, ObserversMayComeGoAndAssignInsideACall)
{
    std::string told;
    Observable<int> value{0};
    Subscription late;
    Subscription second;
    Subscription first = value.observe([&](int incoming) {
        told += "first ";
        first = nullptr;
        second = nullptr; // it must not be called any more, though it was there when the telling began
        late = value.observe([&](int) { told += "late "; });
        if (incoming == 1) value.set(7);
    });
    second = value.observe([&](int) { told += "second "; });
    value.set(1);
    EXPECT_EQ(told, "first late ");
    EXPECT_EQ(value.get(), 1);
}

} // namespace

} // namespace velmora
