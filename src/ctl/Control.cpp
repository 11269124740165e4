// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Control.h"

#include "AccountControl.h"
#include "FleetControl.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "base/Version.h"
#include "link/DaemonLink.h"
#include "options/Options.h"
#include "output/HistoryView.h"
#include "output/StatusView.h"
#include "report/Diagnosis.h"
#include "report/Watch.h"
#include "texts/ChargerTexts.h"
#include "texts/PanelTexts.h"
#include "wire/ChargerInterface.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <span>
#include <string_view>
#include <system_error>

namespace velmora::ctl {

namespace {

using Command = Request::Command;

/// Standard output may be a full disk.
ExitStatus print(const std::string& text)
{
    if (std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0) return ExitStatus::done;
    const auto why = std::generic_category().message(errno);
    std::fprintf(stderr, "velmoractl: %s\n", tr("The output cannot be written: %1.", why).c_str());
    return ExitStatus::failed;
}

/// The commands, over a daemon that answers.
class Control {
public:
    explicit Control(const Request& request) : request_(request), link_(loop_, request.patience)
    {
        link_.onLongWait = [] {
            const auto text = tr("Still waiting: somebody may have been asked for a password.");
            std::fprintf(stderr, "velmoractl: %s\n", text.c_str());
        };
    }

    ExitStatus run()
    {
        switch (request_.command) {
        case Command::limit:
            return limit();
        case Command::autoProtect:
            return change("isAppleRecommendedMode");
        case Command::storage:
            return change("isStorageModeEnabled");
        case Command::full:
            return change("isTemporaryOverride");
        case Command::pause:
            return pause();
        case Command::resume:
            return resume();
        case Command::history:
            return history();
        case Command::watch:
            return watch(loop_, link_, request_.isJson);
        default:
            return status();
        }
    }

    void describeTo(Diagnosis& diagnosis)
    {
        diagnosis.add(link_.snapshot());
        diagnosis.add(link_.actions());
    }

private:
    ExitStatus status()
    {
        const auto now = link_.snapshot();
        const auto printed = print(request_.isJson ? jsonText(statusJson(now)) + '\n' : statusText(now));
        return now.charger.hasBattery ? printed : ExitStatus::unable;
    }

    ExitStatus history()
    {
        const auto samples = link_.history();
        if (request_.isJson) return print(historyJson(samples));
        return print(request_.isCsv ? historyCsv(samples) : historyText(samples));
    }

    ExitStatus limit()
    {
        KeyedArchive changes;
        changes.encode("customChargeLimit", request_.limit);
        changes.encode("isAppleRecommendedMode", true);
        if (request_.resumeBelow) changes.encode("customHysteresis", request_.limit - *request_.resumeBelow);
        return apply(changes);
    }

    ExitStatus change(const char* setting)
    {
        KeyedArchive changes;
        changes.encode(setting, request_.isOn);
        return apply(changes);
    }

    ExitStatus apply(const KeyedArchive& changes)
    {
        const auto before = controllable();
        link_.change(changes);
        link_.settled(before);
        return tell();
    }

    ExitStatus pause()
    {
        controllable();
        if (link_.control(wire::charger::pauseCharging))
            throw Failure(ExitStatus::unable,
                          tr("Charging goes on: this charger cannot be paused at the present level."));
        return tell();
    }

    ExitStatus resume()
    {
        controllable();
        link_.control(wire::charger::resumeCharging);
        return tell();
    }

    /// The charger, which takes a limit.
    ChargerReport controllable()
    {
        auto charger = link_.charger();
        if (charger.hasBattery && charger.control != ChargerReport::Control::none) return charger;
        throw Failure(ExitStatus::unable, charger::limiterText({.charger = charger}));
    }

    /// What came of a change.
    ExitStatus tell()
    {
        const auto now = link_.glance();
        if (now.charger.isRefused)
            throw Failure(ExitStatus::failed,
                          tr("The charger refused the change, and holds what it held. This "
                             "tells why: journalctl -u app.velmora.daemon"));
        if (request_.isJson) return print(jsonText(statusJson(now)) + '\n');
        const auto situation = situationOf(now);
        std::string text = charger::limiterText(situation) + '\n';
        if (request_.command == Command::limit) text += limitText(now, situation);
        return print(text);
    }

    static std::string limitText(const Snapshot& now, const Situation& situation)
    {
        const auto limit = now.settings.customChargeLimit;
        if (now.charger.mode != ChargerReport::Mode::autoProtect && limit < 100)
            return tr("The limit of %1 comes into force after that.", panel::percentageText(limit)) + '\n';
        const auto start = charger::startEffect(situation, limit, now.settings.customHysteresis);
        return charger::limitEffect(situation) + '\n' + (start.empty() ? "" : start + '\n');
    }

    const Request& request_;
    EventLoop loop_;
    DaemonLink link_;
};

/// Without a daemon it is told what else there is, and why there is none.
ExitStatus diagnose(const Request& request)
{
    Diagnosis diagnosis(Sysfs::ofEnvironment());
    try {
        Control(request).describeTo(diagnosis);
    } catch (const Failure& failure) {
        diagnosis.addAbsence(failure.what());
    } catch (const std::system_error& failure) {
        diagnosis.addAbsence(failure.what()); // the bus hung up
    }
    return print(request.isJson ? diagnosis.json() : diagnosis.text());
}

ExitStatus run(const Request& request)
{
    switch (request.command) {
    case Command::help:
        return print(usage());
    case Command::version:
        return print(versionLine("velmoractl"));
    case Command::diagnose:
        return diagnose(request);
    case Command::fleet:
        return print(FleetControl(request).run());
    case Command::account:
        return print(AccountControl(request).run());
    default:
        return Control(request).run();
    }
}

/// For a person on standard error; for a program that reads JSON on standard output, too.
int fail(const Failure& failure, bool isJson)
{
    const auto status = static_cast<int>(failure.status);
    const auto text = printable(failure.told());
    std::fprintf(stderr, "velmoractl: %s\n", text.c_str());
    if (isJson) print(jsonText({{"error", text}, {"exitStatus", status}}) + '\n');
    return status;
}

} // namespace

int runControl(int argc, const char* const* argv)
{
    const auto count = static_cast<std::size_t>(argc > 1 ? argc - 1 : 0);
    const std::span words(argv + 1, count);
    const auto parsed = parse(words);
    const auto* request = std::get_if<Request>(&parsed);
    if (!request) {
        const auto advice = tr("%1 See velmoractl --help.", std::get<std::string>(parsed));
        const bool isJson = std::ranges::find(words, std::string_view("--json")) != words.end();
        return fail({ExitStatus::usage, advice}, isJson);
    }
    try {
        return static_cast<int>(run(*request));
    } catch (const Failure& failure) {
        return fail(failure, request->isJson);
    } catch (const std::system_error& failure) {
        return fail({ExitStatus::failed, tr("The bus fails: %1.", std::string(failure.what()))},
                    request->isJson);
    }
}

} // namespace velmora::ctl
