// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ical/ContentLines.h"

#include <algorithm>
#include <array>
#include <optional>

namespace velmora {

namespace {

char upper(char one)
{
    return one >= 'a' && one <= 'z' ? static_cast<char>(one - 'a' + 'A') : one;
}

bool isSame(std::string_view text, std::string_view upperCase)
{
    return std::ranges::equal(text, upperCase, {}, upper);
}

/// The next line with those that continue it, which begin with a blank; taken from `text`.
std::string_view nextLine(std::string_view& text)
{
    std::size_t end = 0;
    do {
        end = std::min(text.find('\n', end), text.size());
        end = std::min(end + 1, text.size());
    } while (end < text.size() && (text[end] == ' ' || text[end] == '\t'));
    const auto line = text.substr(0, end);
    text.remove_prefix(end);
    return line;
}

std::string_view nameOf(std::string_view line)
{
    return line.substr(0, line.find_first_of(":;\r\n"));
}

/// Of "BEGIN:VEVENT" the component's name.
std::string_view valueOf(std::string_view line)
{
    const auto colon = line.find(':');
    if (colon == line.npos) return {};
    line.remove_prefix(colon + 1);
    return line.substr(0, line.find_first_of(" \t\r\n"));
}

bool isNeeded(std::string_view property)
{
    constexpr std::array<std::string_view, 12> needed{"UID",     "SEQUENCE", "SUMMARY",  "LOCATION",
                                                      "DTSTART", "DTEND",    "DURATION", "RRULE",
                                                      "RDATE",   "EXDATE",   "STATUS",   "RECURRENCE-ID"};
    return std::ranges::any_of(needed, [&](auto one) { return isSame(property, one); });
}

/// Follows the components of a text, line by line.
class Splitter {
public:
    explicit Splitter(const ComponentSink& sink) : sink_(sink) {}

    void take(std::string_view line)
    {
        const auto name = nameOf(line);
        if (isSame(name, "BEGIN"))
            begin(valueOf(line), line);
        else if (isSame(name, "END"))
            end(valueOf(line), line);
        else if (isZone_ || (isEvent_ && depth_ == 1 && isNeeded(name)))
            keep(line);
    }

    bool isGood() const { return isGood_ && depth_ == 0; }

private:
    void begin(std::string_view name, std::string_view line)
    {
        const bool isEvent = isSame(name, "VEVENT");
        const bool isZone = isSame(name, "VTIMEZONE");
        if (isEvent || (isZone && depth_ == 0)) { // an event never lies in another: the one before has no end
            isGood_ = isGood_ && depth_ == 0;
            isEvent_ = isEvent;
            isZone_ = isZone;
            depth_ = 0;
            component_.clear();
        } else if (!isEvent_ && !isZone_) {
            return;
        }
        ++depth_;
        if (isZone_ || depth_ == 1) keep(line);
    }

    void end(std::string_view name, std::string_view line)
    {
        if (depth_ == 0) return;
        if (isZone_ || depth_ == 1) keep(line);
        if (isSame(name, "VEVENT") || isSame(name, "VTIMEZONE")) depth_ = 1;
        if (--depth_ > 0) return;
        if (component_.size() > maximumComponentBytes)
            isGood_ = false;
        else if (isEvent_)
            sink_.event(component_);
        else
            sink_.zone(component_);
        isEvent_ = isZone_ = false;
    }

    /// Only the first byte too many is kept of what is too long.
    void keep(std::string_view line)
    {
        component_ +=
            line.substr(0, maximumComponentBytes + 1 - std::min(component_.size(), maximumComponentBytes));
        if (component_.size() <= maximumComponentBytes && component_.back() != '\n') component_ += '\n';
    }

    const ComponentSink& sink_;
    std::string component_;
    int depth_ = 0; ///< 1: in the event or zone itself
    bool isEvent_ = false;
    bool isZone_ = false;
    bool isGood_ = true;
};

} // namespace

bool splitComponents(std::string_view text, const ComponentSink& sink)
{
    Splitter splitter(sink);
    while (!text.empty()) splitter.take(nextLine(text));
    return splitter.isGood();
}

} // namespace velmora
