// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/JournalLog.h"
#include "base/Utf8.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using namespace std::string_literals;

TEST(JournalLog, StandardErrorGetsOneLineACall)
{
    JournalLog log("velmora", JournalLog::Sink::standardError);
    testing::internal::CaptureStderr();
    log.warning("CalendarContextManager", "met \"A\nB\"");
    log.error("XPCClient", "second");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "<4>app.velmora[CalendarContextManager]: met \"A\\nB\"\n"
              "<3>app.velmora[XPCClient]: second\n");
}

TEST(JournalLog, TextOfOthersCannotForgeLinesNorMoveTheCursor)
{
    const struct {
        std::string text, line, clean;
    } cases[] = {
        {"80 % \u00e9\U0001f50b", "80 % \u00e9\U0001f50b", "80 % \u00e9\U0001f50b"},
        {"a\r\n\tb\\", "a\\r\\n\\tb\\\\", "a\r\n\tb\\"},
        {"\x1b[2J\x7f", "\\x1b[2J\\x7f", "\x1b[2J\x7f"},
        {"\u009b2J", "\\xc2\\x9b2J", "\u009b2J"}, // a control character of two bytes
        {"a\0b"s, "a\\x00b", "a?b"},
        {"\xff\xc3", "\\xff\\xc3", "??"},                     // no lead byte; cut short
        {"\xc0\xaf", "\\xc0\\xaf", "??"},                     // overlong
        {"\xed\xa0\x80", "\\xed\\xa0\\x80", "???"},           // surrogate
        {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80", "????"}, // past the last character
        {"\U000bffff\ufdd0", "\U000bffff\ufdd0", "??"},       // noncharacters, which sd-bus refuses
    };
    for (const auto& [text, line, clean] : cases) {
        EXPECT_EQ(escapedLine(text), line);
        EXPECT_EQ(cleanUtf8(text), clean);
    }
}

} // namespace
} // namespace velmora
