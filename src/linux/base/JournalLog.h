// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Mutex.h"
#include "platform/Log.h"

#include <string>

namespace velmora {

/// The platform's log on Linux: the journal; where there is none, syslog; where there is neither, standard
/// error. A journal that refuses a line hands it down the same way, so that no line is lost.
///
/// In the journal a line carries VELMORA_SUBSYSTEM=app.velmora and VELMORA_CATEGORY=<category>. On standard
/// error it reads `<priority>app.velmora[category]: text`, with the priorities of syslog. There and in syslog
/// one call is one line, whatever the text holds.
class JournalLog final : public Log {
public:
    enum class Sink { best, standardError };

    /// `program` is the identifier that the journal shows.
    explicit JournalLog(std::string program, Sink sink = sinkOfEnvironment());

    /// Any thread.
    void write(LogLevel level, std::string_view category, std::string_view text) override;

    /// VELMORA_LOG=stderr in the environment asks for standard error; anything else for the best there is.
    static Sink sinkOfEnvironment();

private:
    bool writeToJournal(int priority, std::string_view category, std::string_view text) const;
    bool writeToSyslog(int priority, std::string_view category, std::string_view text) const;
    void writeToStandardError(int priority, std::string_view category, std::string_view text);

    std::string program_;
    Sink sink_;
    Mutex standardError_; ///< a long line takes several writes; they stay together
};

/// `text` on one line: backslashes, control characters and bytes that are not UTF-8 become `\\`, `\n`,
/// `\xNN`.
std::string escapedLine(std::string_view text);

} // namespace velmora
