// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "options/FleetWords.h"

#include "base/Translation.h"
#include "base/UserName.h"
#include "fleet/EcosystemSync.h"
#include "options/Words.h"
#include "texts/FleetTexts.h"

#include <algorithm>
#include <unistd.h>

namespace velmora::ctl {

namespace {

using Action = FleetRequest::Action;
using Kind = RecordPlace::Kind;

constexpr double highestPort = 65'535;

RecordPlace::Trust trustOf(std::string_view word)
{
    const auto* found = std::ranges::find(recordTrustTexts, word);
    if (found == recordTrustTexts.end())
        throw Fault{tr("--trust takes \"%1\" or \"%2\".", recordTrustTexts[0], recordTrustTexts[1])};
    return static_cast<RecordPlace::Trust>(found - recordTrustTexts.begin());
}

} // namespace

/// An action, and the words that it needs.
struct FleetWords::Row {
    const char* name;
    Action action;
    bool needsDevice = false;
    bool needsValue = false; ///< a level or a switch
    bool takesPlace = false;

    int operands() const { return (needsDevice ? 1 : 0) + (needsValue ? 1 : 0); }
};

constexpr FleetWords::Row FleetWords::rows[] = {
    {"status", Action::status},
    {"on", Action::on, false, false, true},
    {"off", Action::off},
    {"devices", Action::devices},
    {"limit", Action::limit, true, true},
    {"auto-protect", Action::autoProtect, true, true},
    {"storage", Action::storage, true, true},
    {"remove", Action::remove, true},
    {"accept", Action::accept, false, true},
    {"test", Action::test, false, false, true},
};

void FleetWords::takeOption(std::string_view option, const std::function<std::string_view()>& value)
{
    constexpr std::array options{"--this-computer", "--server", "--port",         "--database",
                                 "--user",          "--trust",  "--password-file"};
    if (std::ranges::find(options, option) == options.end() || !row_ || !row_->takesPlace)
        throw Fault{tr("\"%1\" has no option \"%2\".", row_ ? row_->name : "fleet", shown(option))};
    placeOption_ = option;
    if (option == "--this-computer") return;
    const auto word = value();
    if (option == "--server") {
        place_.kind = Kind::server;
        place_.host = word;
    }
    if (option == "--port")
        place_.port = static_cast<std::uint16_t>(number(word, 1, highestPort).value_or(0));
    if (option == "--database") place_.database = word;
    if (option == "--user") place_.user = word;
    if (option == "--trust") place_.trust = trustOf(word);
    if (option == "--password-file") place_.passwordFile = absolutePath(word);
}

void FleetWords::takeOperand(std::string_view word)
{
    if (!row_) return takeAction(word);
    if (operands_ >= row_->operands()) throw Fault{tr("\"%1\" is one word too many.", shown(word))};
    if (operands_++ == 0 && row_->needsDevice)
        request_.device = word;
    else
        takeValue(word);
}

void FleetWords::takeAction(std::string_view word)
{
    const auto* row = std::ranges::find_if(rows, [=](const Row& one) { return one.name == word; });
    if (row == std::end(rows)) throw Fault{tr("\"fleet\" has no command \"%1\".", shown(word))};
    row_ = row;
    request_.action = row->action;
}

void FleetWords::takeValue(std::string_view word)
{
    if (request_.action != Action::limit) {
        request_.isOn = onOff(row_->name, word);
        return;
    }
    const auto limit = number(word, EcosystemSync::lowestLimit, EcosystemSync::highestLimit);
    if (!limit)
        throw Fault{tr("The limit of another machine is a whole number from %1 to %2, in percent.",
                       whole(EcosystemSync::lowestLimit), whole(EcosystemSync::highestLimit))};
    request_.limit = *limit;
}

FleetRequest FleetWords::finished()
{
    if (row_ && operands_ == 0 && row_->needsDevice)
        throw Fault{tr("\"%1\" needs a machine of the fleet.", row_->name)};
    if (row_ && operands_ < row_->operands())
        throw Fault{request_.action == Action::limit ? tr("\"%1\" needs a level in percent.", row_->name)
                                                     : tr("\"%1\" needs \"on\" or \"off\".", row_->name)};
    if (!placeOption_.empty()) request_.place = finishedPlace();
    return request_;
}

RecordPlace FleetWords::finishedPlace() const
{
    auto place = place_;
    if (place.kind == Kind::thisComputer) {
        if (place == RecordPlace{} && placeOption_ == "--this-computer") return place;
        throw Fault{tr("\"%1\" is about a server: --server says which.", std::string(placeOption_))};
    }
    if (place.user.empty()) place.user = localUserName(geteuid());
    if (place.port == 0) throw Fault{tr("A port is a whole number from 1 to %1.", whole(highestPort))};
    if (const auto missing = fleet::missingText(place); !missing.empty()) throw Fault{missing};
    return place;
}

} // namespace velmora::ctl
