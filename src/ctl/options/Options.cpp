// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "options/Options.h"

#include "base/Translation.h"
#include "options/Words.h"
#include "wire/ChargingSettings.h"

#include <algorithm>
#include <array>

namespace velmora::ctl {

namespace {

using Command = Request::Command;

enum class Operand : std::uint8_t { none, level, onOff };

struct CommandRow {
    const char* name;
    Command command;
    Operand operand = Operand::none;
    std::string_view option{}; ///< beside those that all commands have
};

constexpr std::array commands{
    CommandRow{"status", Command::status},
    CommandRow{"limit", Command::limit, Operand::level, "--resume-below"},
    CommandRow{"auto-protect", Command::autoProtect, Operand::onOff},
    CommandRow{"storage", Command::storage, Operand::onOff},
    CommandRow{"full", Command::full, Operand::none, "--cancel"},
    CommandRow{"pause", Command::pause},
    CommandRow{"resume", Command::resume},
    CommandRow{"history", Command::history, Operand::none, "--csv"},
    CommandRow{"watch", Command::watch},
    CommandRow{"diagnose", Command::diagnose},
    CommandRow{"fleet", Command::fleet},
    CommandRow{"account", Command::account},
    CommandRow{"help", Command::help},
};

constexpr auto usageText = trMark(
    "usage: velmoractl [COMMAND] [OPTION]...\n"
    "\n"
    "  status                           level, limits and batteries (without a command, too)\n"
    "  limit PERCENT [--resume-below P] stop charging there, and turn Auto-Protect on\n"
    "  auto-protect on|off              hold the battery at the limit, or do not\n"
    "  storage on|off                   hold the battery at 50%, for a laptop that is put away\n"
    "  full [--cancel]                  charge to 100% once, or do not after all\n"
    "  pause, resume                    stop charging here and now, and go on with it\n"
    "  history [--csv]                  the battery's past\n"
    "  watch                            a line for every change, for status bars\n"
    "  diagnose                         all that a report of a fault needs\n"
    "  fleet [COMMAND]                  the user's machines, which see and command each other:\n"
    "    status, devices                  how this one takes part, and all of them\n"
    "    on [WHERE], off                  take part, or leave; WHERE is --this-computer, or --server\n"
    "                                     HOST [--port P] [--database D] [--user U]\n"
    "                                     [--trust channel-binding|certificate] [--password-file F]\n"
    "    test [WHERE]                     whether the records could live there\n"
    "    accept on|off                    let the others command this one, or not\n"
    "    limit MACHINE PERCENT, auto-protect MACHINE on|off, storage MACHINE on|off\n"
    "    remove MACHINE                   forget one that has been silent for ten minutes\n"
    "  account [COMMAND]                the user's account, which is for show:\n"
    "    status, check                    who is signed in, and whether the provider confirms it\n"
    "    provider ISSUER CLIENT           with whom one signs in; beside it [--parameters P] and\n"
    "                                     [--secret | --secret-file F]; or: provider --none\n"
    "    sign-in, cancel, sign-out        sign in by the browser, end that, or the account\n"
    "\n"
    "  --json             print JSON\n"
    "  --timeout SECONDS  wait that long for an answer\n"
    "  --help, --version\n"
    "\n"
    "It ends with 0 when that is done, 1 when it was refused or failed, 2 when the command line is\n"
    "not understood, 3 when the daemon (for fleet and account: velmora) does not answer, and 4 when there\n"
    "is no battery, its charger cannot do this, or the other machine takes no commands. See\n"
    "velmoractl(1).\n");

class Parser {
public:
    explicit Parser(std::span<const char* const> words) : words_(words) {}

    Request parsed()
    {
        while (next_ < words_.size()) take(words_[next_++]);
        if (row_ && row_->operand != Operand::none && !hasOperand_)
            throw Fault{row_->operand == Operand::level ? tr("\"%1\" needs a level in percent.", row_->name)
                                                        : tr("\"%1\" needs \"on\" or \"off\".", row_->name)};
        checkResume();
        if (request_.command == Command::fleet) request_.fleet = fleet_.finished();
        if (request_.command == Command::account) request_.account = account_.finished();
        return request_;
    }

private:
    void take(std::string_view word)
    {
        if (word == "--help" || word == "-h") return setCommand(Command::help);
        if (word == "--version") return setCommand(Command::version);
        if (word == "--json")
            request_.isJson = true;
        else if (word == "--timeout")
            takePatience(value(word));
        else if (word.starts_with('-') && word.size() > 1)
            takeOption(word);
        else if (!row_)
            takeCommand(word);
        else
            takeOperand(word);
    }

    void setCommand(Command command)
    {
        request_.command = command;
        isFinal_ = true;
    }

    void takeCommand(std::string_view word)
    {
        const auto row = std::ranges::find_if(commands, [=](const auto& one) { return one.name == word; });
        if (row == commands.end()) throw Fault{tr("There is no command \"%1\".", shown(word))};
        row_ = &*row;
        if (!isFinal_) request_.command = row->command;
    }

    void takeOption(std::string_view word)
    {
        if (isOf(Command::fleet)) return fleet_.takeOption(word, [=, this] { return value(word); });
        if (isOf(Command::account)) return account_.takeOption(word, [=, this] { return value(word); });
        if (!row_ || row_->option != word)
            throw Fault{row_ ? tr("\"%1\" has no option \"%2\".", row_->name, shown(word))
                             : tr("There is no option \"%1\".", shown(word))};
        if (word == "--cancel") request_.isOn = false;
        if (word == "--csv") request_.isCsv = true;
        if (word != "--resume-below") return;
        const auto text = value(word);
        request_.resumeBelow = number(text, 0, 100);
        if (!request_.resumeBelow) throw Fault{tr("\"%1\" is no level in percent.", shown(text))};
    }

    void takeOperand(std::string_view word)
    {
        if (isOf(Command::fleet)) return fleet_.takeOperand(word);
        if (isOf(Command::account)) return account_.takeOperand(word);
        if (row_->operand == Operand::none || hasOperand_)
            throw Fault{tr("\"%1\" is one word too many.", shown(word))};
        hasOperand_ = true;
        if (row_->operand == Operand::level) return takeLimit(word);
        request_.isOn = onOff(row_->name, word);
    }

    void takeLimit(std::string_view word)
    {
        const auto& range = *findSetting("customChargeLimit");
        const auto limit = number(word, range.lowest, range.highest);
        if (!limit)
            throw Fault{tr("The limit is a whole number from %1 to %2, in percent.", whole(range.lowest),
                           whole(range.highest))};
        request_.limit = *limit;
    }

    void takePatience(std::string_view text)
    {
        const auto longest = Request::longestPatience.count();
        const auto seconds = number(text, 1, static_cast<double>(longest));
        if (!seconds)
            throw Fault{
                tr("The timeout is a whole number from 1 to %1, in seconds.", std::to_string(longest))};
        request_.patience = std::chrono::seconds(static_cast<int>(*seconds));
    }

    void checkResume() const
    {
        if (!request_.resumeBelow) return;
        const double lowest = request_.limit - findSetting("customHysteresis")->highest;
        if (*request_.resumeBelow >= lowest && *request_.resumeBelow <= request_.limit) return;
        throw Fault{tr("With a limit of %1%, charging may begin again below %2% to %1%.",
                       whole(request_.limit), whole(lowest))};
    }

    std::string_view value(std::string_view option)
    {
        if (next_ >= words_.size()) throw Fault{tr("\"%1\" needs a value.", std::string(option))};
        return words_[next_++];
    }

    bool isOf(Command command) const { return row_ && row_->command == command; }

    std::span<const char* const> words_;
    std::size_t next_ = 0;
    Request request_;
    const CommandRow* row_ = nullptr;
    bool hasOperand_ = false;
    FleetWords fleet_;
    AccountWords account_;
    bool isFinal_ = false; ///< help or version was asked for
};

} // namespace

std::variant<Request, std::string> parse(std::span<const char* const> words)
try {
    return Parser(words).parsed();
} catch (const Fault& fault) {
    return fault.text;
}

std::string usage()
{
    return tr(usageText);
}

} // namespace velmora::ctl
