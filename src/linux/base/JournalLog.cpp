// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#define SD_JOURNAL_SUPPRESS_LOCATION

#include "base/JournalLog.h"

#include "base/Utf8.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/uio.h>
#include <syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

namespace velmora {

namespace {

constexpr auto subsystem = "app.velmora";

int priorityOf(LogLevel level)
{
    switch (level) {
    case LogLevel::debug:
        return LOG_DEBUG;
    case LogLevel::info:
        return LOG_INFO;
    case LogLevel::warning:
        return LOG_WARNING;
    case LogLevel::error:
        return LOG_ERR;
    }
    return LOG_ERR;
}

std::string escapedByte(unsigned char byte)
{
    switch (byte) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    case '\\':
        return "\\\\";
    default:
        break;
    }
    std::array<char, 8> code{};
    std::snprintf(code.data(), code.size(), "\\x%02x", byte);
    return code.data();
}

bool isPlain(std::string_view character)
{
    const auto first = static_cast<unsigned char>(character[0]);
    if (character.size() == 1) return first >= 0x20 && first != 0x7f && first != '\\';
    const bool isC1 = first == 0xc2 && static_cast<unsigned char>(character[1]) < 0xa0; // a terminal obeys it
    return !isC1;
}

std::string field(std::string_view name, std::string_view value)
{
    std::string assignment(name);
    assignment += '=';
    assignment += value;
    return assignment;
}

bool isThere(const char* socket)
{
    return access(socket, F_OK) == 0;
}

} // namespace

std::string escapedLine(std::string_view text)
{
    std::string line;
    line.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = utf8CharacterLength(text);
        const bool plain = length > 0 && isPlain(text.substr(0, length));
        const std::size_t taken = plain ? length : 1;
        if (plain)
            line += text.substr(0, taken);
        else
            line += escapedByte(static_cast<unsigned char>(text[0]));
        text.remove_prefix(taken);
    }
    return line;
}

JournalLog::Sink JournalLog::sinkOfEnvironment()
{
    const char* wanted = std::getenv("VELMORA_LOG");
    return wanted && std::string_view(wanted) == "stderr" ? Sink::standardError : Sink::best;
}

JournalLog::JournalLog(std::string program, Sink sink) : program_(std::move(program)), sink_(sink)
{
    if (sink_ == Sink::best) openlog(program_.c_str(), LOG_PID, LOG_DAEMON);
}

void JournalLog::write(LogLevel level, std::string_view category, std::string_view text)
{
    const int priority = priorityOf(level);
    if (sink_ == Sink::best) {
        if (writeToJournal(priority, category, text)) return;
        if (writeToSyslog(priority, category, text)) return;
    }
    writeToStandardError(priority, category, text);
}

bool JournalLog::writeToJournal(int priority, std::string_view category, std::string_view text) const
{
    if (!isThere("/run/systemd/journal/socket")) return false; // the library would lose the line and say 0
    std::array fields{field("MESSAGE", text), field("PRIORITY", std::to_string(priority)),
                      field("SYSLOG_IDENTIFIER", program_), field("VELMORA_SUBSYSTEM", subsystem),
                      field("VELMORA_CATEGORY", category)};
    std::array<iovec, fields.size()> parts{};
    for (std::size_t i = 0; i < fields.size(); ++i) parts[i] = {fields[i].data(), fields[i].size()};
    return sd_journal_sendv(parts.data(), static_cast<int>(parts.size())) >= 0;
}

bool JournalLog::writeToSyslog(int priority, std::string_view category, std::string_view text) const
{
    if (!isThere("/dev/log")) return false;
    const std::string line = escapedLine(text);
    syslog(priority, "[%s:%.*s] %s", subsystem, static_cast<int>(category.size()), category.data(),
           line.c_str());
    return true;
}

void JournalLog::writeToStandardError(int priority, std::string_view category, std::string_view text)
{
    std::string line = "<";
    line += std::to_string(priority);
    line += '>';
    line += subsystem;
    line += '[';
    line += escapedLine(category);
    line += "]: ";
    line += escapedLine(text);
    line += '\n';
    const MutexLock lock(standardError_);
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return; // there is no place left to log to
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace velmora
