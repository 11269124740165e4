// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "windows/WindowsProgram.h"

#include "base/Utf8.h"
#include "wire/ModelFace.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "WindowsProgram";
constexpr std::size_t maximumReason = 200;                 // bytes of another program's message
constexpr std::uint64_t answerPatience = 2'000'000;        // microseconds
constexpr std::chrono::milliseconds startPatience{10'000}; // a cold disk takes a second or two

} // namespace

WindowsProgram::WindowsProgram(EventLoop& loop, sd_bus* bus, const Clock& clock, Log& log,
                               std::filesystem::path program)
    : loop_(loop),
      bus_(bus),
      clock_(clock),
      log_(log),
      complaints_(log, category),
      program_(std::move(program))
{
    if (bus_) owner_.emplace(bus_, wire::windows::serviceName, [this] { appeared(); });
}

WindowsProgram::~WindowsProgram()
{
    if (run_) run_->process->kill(); // it would end by itself, unless it hangs
}

void WindowsProgram::request(WindowRequest request)
{
    if (!bus_) return log_.warning(category, "Cannot open a window without a session bus.");
    if (told_) return wait(std::move(request));
    if (owner_->exists()) return tell(request);
    if (!run_) return start(request);
    if (isStuck()) {
        log_.warning(category, program_.filename().string() + " did not start in time; killed it.");
        run_->process->kill();
    }
    wait(std::move(request));
}

/// A second click while the window is opening is an impatient one, not a request to close it.
void WindowsProgram::wait(WindowRequest request)
{
    if (request.isToggle && isOnItsWay(request.window) && !isStuck()) return;
    std::erase_if(waiting_, [&](const auto& one) { return one.window == request.window; });
    waiting_.push_back(std::move(request));
}

bool WindowsProgram::isOnItsWay(const std::string& window) const
{
    return (run_ && !run_->hasAppeared && run_->window == window) || (told_ && told_->window == window) ||
           std::ranges::find(waiting_, window, &WindowRequest::window) != waiting_.end();
}

std::optional<WindowRequest> WindowsProgram::takeNext()
{
    if (waiting_.empty()) return std::nullopt;
    auto next = std::move(waiting_.front());
    waiting_.pop_front();
    return next;
}

bool WindowsProgram::isStuck() const
{
    return run_ && !owner_->exists() && clock_.sinceBoot() - run_->started > startPatience;
}

void WindowsProgram::start(const WindowRequest& request)
try {
    const auto ended = [this](const WindowsProcess::End& end) { this->ended(end); };
    run_ = Run{.window = request.window,
               .started = clock_.sinceBoot(),
               .process = std::make_unique<WindowsProcess>(loop_, program_, request, ended)};
    complaints_.settle("start");
} catch (const std::system_error& failure) {
    waiting_.clear(); // they would meet the same
    complaints_.raise("start", std::string("Cannot start ") + failure.what() + ".");
}

void WindowsProgram::tell(const WindowRequest& request)
{
    const auto& [window, isToggle, at, token, takesFocus] = request;
    sd_bus_slot* slot = nullptr;
    sd_bus_message* made = nullptr;
    using namespace wire::windows;
    const auto* method = isToggle ? toggle : takesFocus ? show : showInactive;
    dbus::check(sd_bus_message_new_method_call(bus_, &made, serviceName, objectPath, interface, method),
                "new call");
    const dbus::Message call(made);
    dbus::check(sd_bus_message_set_auto_start(made, false), "set_auto_start");
    dbus::check(sd_bus_message_append(made, "s", window.c_str()), "append");
    const auto place = at.value_or(ScreenPoint{-1, -1});
    if (isToggle) dbus::check(sd_bus_message_append(made, "ii", place.x, place.y), "append");
    if (isToggle || takesFocus) dbus::check(sd_bus_message_append(made, "s", token.c_str()), "append");
    if (sd_bus_call_async(bus_, &slot, made, dbus::serve<WindowsProgram, &WindowsProgram::answered>, this,
                          answerPatience) < 0)
        return; // a lost bus was logged when it was lost
    call_.reset(slot);
    told_ = request;
}

int WindowsProgram::answered(sd_bus_message* reply)
{
    call_.reset();
    const auto told = std::exchange(told_, std::nullopt);
    const auto* error = sd_bus_message_get_error(reply);
    const bool isHungOrGone =
        error && sd_bus_error_has_names(error, SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER,
                                        SD_BUS_ERROR_NO_REPLY);
    const bool isAboutToGo = error && run_ && sd_bus_error_has_name(error, SD_BUS_ERROR_UNKNOWN_OBJECT);
    if ((isHungOrGone || isAboutToGo) && !isOnItsWay(told->window)) waiting_.push_front(*told);
    if (isHungOrGone) {
        startAnew();
    } else if (!isAboutToGo) {
        if (error) refused(*told, *error);
        serveNext();
    }
    return 0;
}

void WindowsProgram::serveNext()
{
    if (auto next = takeNext()) request(std::move(*next));
}

void WindowsProgram::refused(const WindowRequest& request, const sd_bus_error& error)
{
    const std::string why = error.message ? error.message : error.name;
    complaints_.raise("refused " + request.window, "Cannot open the window \"" + request.window +
                                                       "\": " + std::string(utf8Prefix(why, maximumReason)));
}

/// Once the previous program has ended; one that hangs is killed.
void WindowsProgram::startAnew()
{
    if (owner_->exists()) {
        log_.warning(category,
                     program_.filename().string() + " does not answer" + (run_ ? "; killed it." : "."));
        if (!run_) return waiting_.clear();
        run_->process->kill();
    }
    if (run_) return;
    if (const auto next = takeNext()) start(*next);
}

void WindowsProgram::appeared()
{
    if (run_) {
        run_->hasAppeared = true;
        complaints_.settle("before " + run_->window);
    }
    serveNext();
}

void WindowsProgram::ended(const WindowsProcess::End& end)
{
    const bool hasAppeared = run_->hasAppeared || owner_->exists();
    const auto window = run_->window;
    run_.reset();
    const auto program = program_.filename().string() + " " + end.fate;
    if (!hasAppeared)
        complaints_.raise("before " + window, program + " before it showed the window \"" + window + "\".");
    else if (!end.isClean)
        complaints_.raise("end", program + ".");
    else
        complaints_.settle("end");
    if (told_) return; // an error that the name has no owner follows
    if (const auto next = takeNext()) start(*next);
}

} // namespace velmora
