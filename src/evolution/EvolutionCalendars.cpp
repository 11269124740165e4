// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "EvolutionCalendars.h"

#include "base/Handle.h"

#include <ctime>
#include <libecal/libecal.h>
#include <memory>
#include <set>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace velmora::evolution {

namespace {

using Error = Handle<GError, g_error_free>;
using Text = Handle<char, g_free>;

struct Unref {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};
template <typename T>
using Ref = std::unique_ptr<T, Unref>;

/// The service's word would be waited for without an end otherwise: some kinds of calendar never connect.
constexpr guint32 doNotWait = static_cast<guint32>(-1);
constexpr std::size_t maximumZones = 50;

std::string words(const Error& error)
{
    return error ? error->message : "nobody says why";
}

/// A time as the service's queries have it.
std::string queryTime(Date date)
{
    const auto seconds = static_cast<std::time_t>(date.unixSeconds());
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[32];
    std::strftime(text, sizeof text, "(make-time \"%Y%m%dT%H%M%SZ\")", &parts);
    return text;
}

bool isFilledByOthers(ESource* source)
{
    auto* extension =
        static_cast<ESourceBackend*>(e_source_get_extension(source, E_SOURCE_EXTENSION_CALENDAR));
    const char* backend = e_source_backend_get_backend_name(extension);
    const std::string_view name = backend ? backend : "";
    return name == "contacts" || name == "weather";
}

void append(std::string& text, ICalComponent* component)
{
    const Text written(component ? i_cal_component_as_ical_string(component) : nullptr);
    if (written) text.append(written.get()).append("\n");
}

/// One calendar of the service.
class Calendar {
public:
    Calendar(ECalClient* client, Date from, Date to) : client_(client), from_(from), to_(to) {}

    /// All that may touch the time. Throws what is wrong as words.
    std::string text()
    {
        // A whole day is where this machine is, which the service does not know to the hour.
        const auto query = "(occur-in-time-range? " + queryTime(from_ + -duration::day) + " " +
                           queryTime(to_ + duration::day) + ")";
        GSList* found = nullptr;
        Error error;
        if (!e_cal_client_get_object_list_sync(client_, query.c_str(), &found, nullptr, out(error)))
            throw std::runtime_error(words(error));
        std::string result;
        std::set<std::string> recurring;
        for (auto* one = found; one; one = one->next) {
            auto* component = static_cast<ICalComponent*>(one->data);
            const char* uid = i_cal_component_get_uid(component);
            const bool isOneOfMany = e_cal_util_component_has_recurrences(component) ||
                                     e_cal_util_component_is_instance(component);
            if (uid && isOneOfMany)
                recurring.insert(uid);
            else
                append(result, component);
        }
        e_util_free_nullable_object_slist(found);
        for (const auto& uid : recurring) appendWithItsOverrides(result, uid);
        appendZones(result);
        return result;
    }

private:
    /// What was moved out of the time is not found by it, and still keeps its event from occurring.
    void appendWithItsOverrides(std::string& text, const std::string& uid)
    {
        GSList* found = nullptr;
        Error error;
        if (!e_cal_client_get_objects_for_uid_sync(client_, uid.c_str(), &found, nullptr, out(error))) return;
        for (auto* one = found; one; one = one->next)
            append(text, e_cal_component_get_icalcomponent(static_cast<ECalComponent*>(one->data)));
        e_util_free_nullable_object_slist(found);
    }

    void appendZones(std::string& text)
    {
        constexpr std::string_view parameter = ";TZID=";
        std::set<std::string> names;
        for (auto at = text.find(parameter); at != text.npos; at = text.find(parameter, at + 1)) {
            const auto begin = at + parameter.size();
            auto name = text.substr(begin, text.find_first_of(":;\r\n", begin) - begin);
            std::erase(name, '"');
            if (names.size() < maximumZones) names.insert(std::move(name));
        }
        for (const auto& name : names) {
            ICalTimezone* zone = nullptr;
            Error error;
            if (!e_cal_client_get_timezone_sync(client_, name.c_str(), &zone, nullptr, out(error)) || !zone)
                continue;
            const Ref<ICalComponent> component(i_cal_timezone_get_component(zone));
            append(text, component.get());
        }
    }

    ECalClient* client_;
    Date from_;
    Date to_;
};

void read(ESource* source, Date from, Date to, const Sink& sink)
try {
    const char* name = e_source_get_display_name(source);
    const std::string calendar = name ? name : "a calendar";
    Error error;
    const Ref<EClient> client(
        e_cal_client_connect_sync(source, E_CAL_CLIENT_SOURCE_TYPE_EVENTS, doNotWait, nullptr, out(error)));
    if (!client) return sink.problem(calendar + " cannot be opened: " + words(error) + ".");
    sink.calendar(calendar, Calendar(E_CAL_CLIENT(client.get()), from, to).text());
} catch (const std::runtime_error& failure) {
    sink.problem(std::string(e_source_get_display_name(source)) + " cannot be read: " + failure.what() + ".");
}

} // namespace

void readCalendars(Date from, Date to, const Sink& sink)
{
    Error error;
    const Ref<ESourceRegistry> registry(e_source_registry_new_sync(nullptr, out(error)));
    if (!registry) throw std::runtime_error(words(error));
    GList* sources = e_source_registry_list_enabled(registry.get(), E_SOURCE_EXTENSION_CALENDAR);
    for (auto* one = sources; one; one = one->next) {
        auto* source = static_cast<ESource*>(one->data);
        if (!isFilledByOthers(source)) read(source, from, to, sink);
    }
    g_list_free_full(sources, g_object_unref);
}

} // namespace velmora::evolution
