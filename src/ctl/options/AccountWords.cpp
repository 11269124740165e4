// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "options/AccountWords.h"

#include "base/Translation.h"
#include "options/Words.h"
#include "texts/AccountTexts.h"

#include <algorithm>
#include <array>

namespace velmora::ctl {

namespace {

using Action = AccountRequest::Action;

struct Row {
    const char* name;
    Action action;
};

constexpr std::array rows{
    Row{"status", Action::status}, Row{"provider", Action::provider}, Row{"sign-in", Action::signIn},
    Row{"cancel", Action::cancel}, Row{"sign-out", Action::signOut},  Row{"check", Action::check},
};

} // namespace

void AccountWords::takeOption(std::string_view option, const std::function<std::string_view()>& value)
{
    constexpr std::array options{"--none", "--parameters", "--secret", "--secret-file"};
    if (std::ranges::find(options, option) == options.end() || request_.action != Action::provider)
        throw Fault{tr("\"%1\" has no option \"%2\".", name_ ? name_ : "account", shown(option))};
    if (option == "--none") isNone_ = true;
    if (option == "--parameters") request_.source.parameters = value();
    if (option == "--secret") request_.isSecretAsked = true;
    if (option == "--secret-file") request_.secretFile = absolutePath(value());
}

void AccountWords::takeOperand(std::string_view word)
{
    if (!name_) {
        const auto* row = std::ranges::find_if(rows, [=](const Row& one) { return one.name == word; });
        if (row == rows.end()) throw Fault{tr("\"account\" has no command \"%1\".", shown(word))};
        name_ = row->name;
        request_.action = row->action;
    } else if (request_.action == Action::provider && request_.source.issuer.empty()) {
        request_.source.issuer = word;
    } else if (request_.action == Action::provider && request_.source.clientID.empty()) {
        request_.source.clientID = word;
    } else {
        throw Fault{tr("\"%1\" is one word too many.", shown(word))};
    }
}

AccountRequest AccountWords::finished()
{
    if (request_.action != Action::provider) return request_;
    const bool hasSecret = request_.isSecretAsked || !request_.secretFile.empty();
    if (isNone_ && (request_.source != IdentitySource{} || hasSecret))
        throw Fault{tr("\"%1\" stands alone: it means that there is no provider.", "--none")};
    if (isNone_) return request_;
    if (request_.source.issuer.empty())
        throw Fault{tr("\"%1\" needs the issuer and the client of a provider, or --none.", name_)};
    if (const auto flaw = account::flawText(request_.source); !flaw.empty()) throw Fault{flaw};
    return request_;
}

} // namespace velmora::ctl
