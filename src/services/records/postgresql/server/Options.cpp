// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/postgresql/server/Options.h"

#include "base/Text.h"
#include "base/Translation.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace velmora::postgresql {

namespace {

using Command = Request::Command;

constexpr auto usageText = trMark(
    "usage: velmora-fleet-server COMMAND [OPTION]...\n"
    "\n"
    "  setup          make a PostgreSQL server ready for the records of people's machines, and check it\n"
    "  add PERSON     let a person in, or give that person another password\n"
    "  remove PERSON  remove a person, with that person's records\n"
    "  check          say what is right and what is wrong\n"
    "\n"
    "  --host HOST      the server; otherwise the one of this computer, by its socket\n"
    "  --port PORT      5432 unless told otherwise\n"
    "  --database NAME  velmora unless told otherwise\n"
    "  --admin NAME     who administers it; postgres unless told otherwise\n"
    "  --trust channel-binding|certificate\n"
    "                   how a server behind --host proves who it is: it knows the password, which\n"
    "                   needs no certificate, or it has a certificate that this system trusts\n"
    "  --admin-password-file FILE, --password-file FILE\n"
    "                   passwords for scripts, in files of mode 0600; otherwise you are asked\n"
    "  --help, --version\n"
    "\n"
    "It ends with 0 when that is done and all is right, 1 when something failed or is wrong, and 2 when\n"
    "the command line is not understood. See velmora-fleet-server(1).\n");

struct CommandRow {
    std::string_view name;
    Command command;
    bool hasPerson = false;
};

constexpr std::array commands{CommandRow{"setup", Command::setup}, CommandRow{"add", Command::add, true},
                              CommandRow{"remove", Command::remove, true},
                              CommandRow{"check", Command::check}, CommandRow{"help", Command::help}};

/// Thrown here alone, and caught by `parse`.
struct Fault {
    std::string text;
};

std::string shown(std::string_view word)
{
    return printable(word.substr(0, 100));
}

/// A name that velmora, too, can be given: printable, without blanks, and whole for the server.
std::string name(std::string_view word)
{
    constexpr std::size_t longest = 63; // bytes, past which a server cuts names
    const bool isPlain = std::ranges::all_of(word, [](char c) { return c > ' ' && c < '\x7F'; });
    if (!word.empty() && word.size() <= longest && isPlain) return std::string(word);
    throw Fault{tr("\"%1\" cannot be a name: it takes 1 to 63 letters, digits and signs without blanks.",
                   shown(word))};
}

class Parser {
public:
    explicit Parser(std::span<const char* const> words) : words_(words) {}

    Request parsed()
    {
        while (next_ < words_.size()) take(words_[next_++]);
        if (isFinal_) return request_;
        if (!row_) throw Fault{tr("A command is missing.")};
        if (row_->hasPerson && request_.person.empty())
            throw Fault{tr("\"%1\" needs the name of a person.", std::string(row_->name))};
        return request_;
    }

private:
    void take(std::string_view word)
    {
        if (word == "--help" || word == "-h") return end(Command::help);
        if (word == "--version") return end(Command::version);
        if (word.starts_with('-') && word.size() > 1) return takeOption(word);
        if (!row_) return takeCommand(word);
        if (!row_->hasPerson || !request_.person.empty())
            throw Fault{tr("\"%1\" is one word too many.", shown(word))};
        request_.person = name(word);
        if (request_.person.starts_with("pg_"))
            throw Fault{tr("Names that begin with \"pg_\" are the server's own.")};
    }

    void end(Command command)
    {
        request_.command = command;
        isFinal_ = true;
    }

    void takeCommand(std::string_view word)
    {
        const auto row = std::ranges::find(commands, word, &CommandRow::name);
        if (row == commands.end()) throw Fault{tr("There is no command \"%1\".", shown(word))};
        row_ = &*row;
        if (!isFinal_) request_.command = row->command;
        isFinal_ = isFinal_ || row->command == Command::help;
    }

    void takeOption(std::string_view word)
    {
        auto& place = request_.place;
        if (word == "--host")
            place.host = value(word);
        else if (word == "--port")
            place.port = port(value(word));
        else if (word == "--database")
            place.database = name(value(word));
        else if (word == "--admin")
            place.user = name(value(word));
        else if (word == "--trust")
            place.trust = trust(value(word));
        else if (word == "--admin-password-file")
            request_.adminPasswordFile = absolute(value(word));
        else if (word == "--password-file")
            request_.passwordFile = absolute(value(word));
        else
            throw Fault{tr("There is no option \"%1\".", shown(word))};
    }

    std::string value(std::string_view option)
    {
        if (next_ == words_.size() || !*words_[next_])
            throw Fault{tr("\"%1\" needs a value.", std::string(option))};
        return words_[next_++];
    }

    static std::uint16_t port(std::string_view text)
    {
        std::uint16_t number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error == std::errc() && end == text.data() + text.size() && number > 0) return number;
        throw Fault{tr("The port is a whole number from 1 to 65535.")};
    }

    static RecordPlace::Trust trust(std::string_view text)
    {
        const auto found = std::ranges::find(recordTrustTexts, text);
        if (found != recordTrustTexts.end())
            return static_cast<RecordPlace::Trust>(found - recordTrustTexts.begin());
        throw Fault{tr("\"--trust\" needs \"channel-binding\" or \"certificate\".")};
    }

    static std::filesystem::path absolute(const std::string& file)
    {
        std::error_code error;
        const auto path = std::filesystem::absolute(file, error);
        return error ? std::filesystem::path(file) : path;
    }

    std::span<const char* const> words_;
    std::size_t next_ = 0;
    const CommandRow* row_ = nullptr;
    bool isFinal_ = false; ///< only help or the version is wanted
    Request request_;
};

} // namespace

std::variant<Request, std::string> parse(std::span<const char* const> words)
{
    try {
        return Parser(words).parsed();
    } catch (const Fault& fault) {
        return fault.text;
    }
}

std::string usage()
{
    return tr(usageText);
}

} // namespace velmora::postgresql
