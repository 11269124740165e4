// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/CalendarHelpers.h"

#include "base/Saturate.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "base/Utf8.h"

#include <cmath>
#include <unistd.h>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "CalendarHelpers";

std::string seconds(double value)
{
    return std::to_string(truncated(value));
}

/// What others wrote, fit to be shown.
std::string clean(const std::string& text)
{
    return printable(cleanUtf8(text));
}

bool isThere(const std::filesystem::path& program)
{
    return access(program.c_str(), X_OK) == 0;
}

void clean(CalendarEvent& event)
{
    event.identifier = clean(event.identifier);
    event.location = clean(event.location);
    if (event.title) event.title = clean(*event.title);
}

} // namespace

std::vector<std::filesystem::path> CalendarHelpers::usualFolders(const std::filesystem::path& data,
                                                                 const std::filesystem::path& home)
{
    std::vector<std::filesystem::path> folders;
    if (!data.empty())
        for (const auto* name : {"velmora/calendars", "calendars", "khal/calendars", "vdirsyncer/calendars",
                                 "evolution/calendar", "korganizer"})
            folders.push_back(data / name);
    if (!home.empty()) folders.push_back(home / ".calendars");
    return folders;
}

CalendarHelpers::CalendarHelpers(Setup setup, Log& log) : setup_(std::move(setup)), complaints_(log, category)
{
    run_.stop();
}

std::vector<std::filesystem::path> CalendarHelpers::presentFolders() const
{
    std::vector<std::filesystem::path> present;
    if (!isThere(setup_.files)) return present; // there would be nobody to read them
    for (const auto& folder : setup_.folders)
        if (std::error_code error; std::filesystem::is_directory(folder, error)) present.push_back(folder);
    return present;
}

CalendarStore::Authorization CalendarHelpers::authorizationStatus() const
{
    if (!isAllowed_) return Authorization::notDetermined;
    const bool isAny = isServiceUsable_ || !presentFolders().empty();
    return isAny ? Authorization::fullAccess : Authorization::restricted;
}

void CalendarHelpers::permit()
{
    isAllowed_ = true;
    run_.allow();
}

void CalendarHelpers::requestFullAccess(Completion completion)
{
    if (!isAllowed_) return completion(false, std::nullopt);
    const bool isAnyFolder = !presentFolders().empty();
    if (!isAnyFolder && isThere(setup_.service)) {
        // It is there, but may have no calendars: the least that can be asked tells.
        const auto answer = report({.helper = setup_.service}, {});
        isServiceUsable_ = answer && answer->calendars() > 0;
    }
    if (isAnyFolder || isServiceUsable_) return completion(true, std::nullopt);
    completion(false, isThere(setup_.files) ? tr("there is no calendar on this computer")
                                            : tr("%1 is not installed", setup_.files.string()));
}

void CalendarHelpers::relinquishAccess()
{
    isAllowed_ = false;
    run_.stop();
    const MutexLock lock(mutex_);
    ofFiles_.clear();
    ofService_.clear();
}

std::optional<CalendarReading> CalendarHelpers::events(Date from, Date to, const Predicate& isWanted)
{
    if (authorizationStatus() != Authorization::fullAccess) return std::nullopt;
    auto folders = presentFolders();
    const bool isAnyFolder = !folders.empty();
    const bool isAnyService = isThere(setup_.service);
    auto ofFiles =
        isAnyFolder ? report({setup_.files, from, to, std::move(folders)}, isWanted) : std::nullopt;
    auto ofService = isAnyService ? report({setup_.service, from, to}, isWanted) : std::nullopt;
    if (ofService) isServiceUsable_ = ofService->calendars() > 0;
    CalendarReading result;
    {
        const MutexLock lock(mutex_);
        if (!isAllowed_) return std::nullopt; // taken back meanwhile
        const bool isFilesTold = follow(ofFiles_, isAnyFolder, ofFiles);
        const bool isServiceTold = follow(ofService_, isAnyService, ofService);
        result.isWhole = isFilesTold && isServiceTold;
        for (const auto* told : {&ofFiles_, &ofService_})
            for (const auto& event : *told)
                if (event.touches(from, to)) result.events.push_back(event);
    }
    wire::calendar::tidy(result.events);
    return result;
}

bool CalendarHelpers::follow(Events& told, bool isThere, std::optional<Reader>& found)
{
    if (found)
        told = std::move(found->events());
    else if (!isThere)
        told.clear();
    return found || !isThere;
}

std::optional<wire::calendar::Reader> CalendarHelpers::report(const Question& question,
                                                              const Predicate& isWanted)
{
    const auto& helper = question.helper;
    std::vector<std::string> arguments{helper, seconds(std::floor(question.from.unixSeconds())),
                                       seconds(std::ceil(question.to.unixSeconds()))};
    arguments.insert(arguments.end(), question.folders.begin(), question.folders.end());
    Reader reader([&isWanted](CalendarEvent& event) {
        clean(event);
        return isWanted && isWanted(event);
    });
    auto fate = run_.run(arguments, {.patience = setup_.patience, .bytes = maximumReportBytes},
                         [&](std::string_view bytes) { reader.take(bytes); });
    if (run_.isStopped()) return std::nullopt;
    complain(reader);
    if (fate.empty() && !reader.isWhole()) fate = "did not tell all";
    if (!fate.empty()) {
        complaints_.raise(helper, "The calendars could not be read: " + helper.string() + " " + fate +
                                      ". What is known of journeys stays as it was.");
        return std::nullopt;
    }
    complaints_.settle(helper);
    return reader;
}

void CalendarHelpers::complain(const Reader& reader)
{
    for (const auto& problem : reader.problems()) complaints_.raise(problem, clean(problem));
}

} // namespace velmora
