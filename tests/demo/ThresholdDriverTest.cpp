// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ThresholdDriver.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace velmora {

namespace {

constexpr auto start = Threshold::start;
constexpr auto end = Threshold::end;

TEST(ThresholdDriver, TakesWritesAsTheKernelsDriversDo)
{
    const struct {
        const char* driver;
        ChargeThresholds held;
        Threshold which;
        const char* text;
        int error;
        ChargeThresholds after;
    } cases[] = {
        {"thinkpad", {75, 80}, end, "90\n", 0, {75, 90}},
        {"thinkpad", {75, 80}, start, "80", 0, {80, 80}},
        {"thinkpad", {75, 80}, start, "81", EINVAL, {75, 80}},
        {"thinkpad", {75, 80}, end, "74", EINVAL, {75, 80}},
        {"thinkpad", {0, 100}, end, "0", EINVAL, {0, 100}},
        {"thinkpad", {0, 100}, start, "100", EINVAL, {0, 100}},
        {"asus", {0, 100}, end, "0", 0, {0, 0}},
        {"dell", {50, 100}, start, "20", 0, {50, 100}},
        {"dell", {50, 80}, start, "90", 0, {75, 80}},
        {"dell", {75, 80}, end, "60", 0, {75, 80}},
        {"huawei", {40, 70}, start, "90", 0, {90, 70}},
        {"lg", {0, 100}, end, "80", 0, {0, 80}},
        {"lg", {0, 80}, end, "90", EINVAL, {0, 80}},
        {"msi", {70, 80}, end, "60", 0, {50, 60}},
        {"msi", {70, 80}, start, "80", 0, {80, 90}},
        {"msi", {70, 80}, start, "91", EINVAL, {70, 80}},
        {"msi", {70, 80}, start, "2147483647", EINVAL, {70, 80}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(std::string(row.driver) + (row.which == end ? " end " : " start ") + row.text);
        auto held = row.held;
        EXPECT_EQ(ThresholdDriver::named(row.driver)->store(held, row.which, row.text), row.error);
        EXPECT_EQ(held, row.after) << held.start << ".." << held.end;
    }
}

} // namespace

} // namespace velmora
