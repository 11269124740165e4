// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "windows/WindowsProgram.h"

#include "base/Utf8.h"
#include "wire/ModelFace.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

extern "C" { // which glibc 2.36 forgot to say itself
#include <sys/pidfd.h>
}

namespace velmora {

namespace {

constexpr auto category = "WindowsProgram";
constexpr std::size_t maximumReason = 200;                 // bytes of another program's message
constexpr std::uint64_t answerPatience = 2'000'000;        // microseconds
constexpr std::chrono::milliseconds startPatience{10'000}; // a cold disk takes a second or two

/// Arguments and environment as posix_spawn takes them; the strings must outlive the result.
std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (auto& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> argumentsFor(const std::filesystem::path& program, const WindowRequest& request)
{
    const auto* option = request.isToggle ? "--toggle" : request.takesFocus ? "--show" : "--show-inactive";
    std::vector<std::string> arguments{program, option, request.window};
    if (request.at) {
        arguments.emplace_back("--at");
        arguments.push_back(std::to_string(request.at->x) + "," + std::to_string(request.at->y));
    }
    return arguments;
}

std::vector<std::string> environmentWith(const std::string& token)
{
    constexpr std::string_view variable = "XDG_ACTIVATION_TOKEN=";
    std::vector<std::string> environment;
    for (char** one = environ; one && *one; ++one) {
        if (!std::string_view(*one).starts_with(variable)) environment.emplace_back(*one);
    }
    if (!token.empty()) environment.push_back(std::string(variable) + token);
    return environment;
}

/// The loop takes its signals from a descriptor and has them blocked; a child must not inherit that.
class SpawnAttributes {
public:
    SpawnAttributes()
    {
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK);
    }
    ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

pid_t spawn(const std::filesystem::path& program, const WindowRequest& request)
{
    auto arguments = argumentsFor(program, request);
    auto environment = environmentWith(request.token);
    pid_t id = -1;
    dbus::check(-posix_spawn(&id, program.c_str(), nullptr, SpawnAttributes().get(),
                             pointers(arguments).data(), pointers(environment).data()),
                program.c_str());
    return id;
}

std::string fate(const siginfo_t& end)
{
    const auto number = std::to_string(end.si_status);
    return end.si_code == CLD_EXITED ? "ended with status " + number : "was ended by signal " + number;
}

} // namespace

/// A process that was started, until its end has been seen.
struct WindowsProgram::Child {
    WindowsProgram& owner;
    std::chrono::milliseconds started;
    pid_t id;
    std::string window; ///< that it was started for
    int descriptor = -1;
    bool hasAppeared = false; ///< it owned the windows' name at some time
    sd_event_source* source = nullptr;

    Child(WindowsProgram& itsOwner, pid_t itsId, std::string itsWindow)
        : owner(itsOwner),
          started(itsOwner.clock_.sinceBoot()),
          id(itsId),
          window(std::move(itsWindow)),
          descriptor(pidfd_open(itsId, 0))
    {
        dbus::check(descriptor < 0 ? -errno : 0, "pidfd_open");
        dbus::check(sd_event_add_io(owner.loop_.handle(), &source, descriptor, EPOLLIN, onEnd, this),
                    "sd_event_add_io");
    }
    ~Child()
    {
        sd_event_source_disable_unref(source);
        if (descriptor >= 0) close(descriptor);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void kill() const { pidfd_send_signal(descriptor, SIGKILL, nullptr, 0); }

    static int onEnd(sd_event_source*, int, std::uint32_t, void* self) noexcept
    {
        const auto* child = static_cast<Child*>(self);
        siginfo_t end{};
        if (waitid(P_PID, static_cast<id_t>(child->id), &end, WEXITED | WNOHANG) == 0 && end.si_pid == 0)
            return 0;
        child->owner.ended(end); // the child goes here
        return 0;
    }
};

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
    if (child_) child_->kill(); // it would end by itself, unless it hangs
}

void WindowsProgram::request(WindowRequest request)
{
    if (!bus_) return log_.warning(category, "Cannot open a window without a session bus.");
    if (told_) return wait(std::move(request));
    if (owner_->exists()) return tell(request);
    if (!child_) return start(request);
    if (isStuck()) {
        log_.warning(category, program_.filename().string() + " did not start in time; killed it.");
        child_->kill();
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
    return (child_ && !child_->hasAppeared && child_->window == window) ||
           (told_ && told_->window == window) ||
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
    return child_ && !owner_->exists() && clock_.sinceBoot() - child_->started > startPatience;
}

void WindowsProgram::start(const WindowRequest& request)
try {
    child_ = std::make_unique<Child>(*this, spawn(program_, request), request.window);
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
    const bool isAboutToGo = error && child_ && sd_bus_error_has_name(error, SD_BUS_ERROR_UNKNOWN_OBJECT);
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
                     program_.filename().string() + " does not answer" + (child_ ? "; killed it." : "."));
        if (!child_) return waiting_.clear();
        child_->kill();
    }
    if (child_) return;
    if (const auto next = takeNext()) start(*next);
}

void WindowsProgram::appeared()
{
    if (child_) {
        child_->hasAppeared = true;
        complaints_.settle("before " + child_->window);
    }
    serveNext();
}

void WindowsProgram::ended(const siginfo_t& end)
{
    const bool hasAppeared = child_->hasAppeared || owner_->exists();
    const auto window = child_->window;
    child_.reset();
    const auto name = program_.filename().string();
    if (!hasAppeared)
        complaints_.raise("before " + window,
                          name + " " + fate(end) + " before it showed the window \"" + window + "\".");
    else if (end.si_code != CLD_EXITED || end.si_status != 0)
        complaints_.raise("end", name + " " + fate(end) + ".");
    else
        complaints_.settle("end");
    if (told_) return; // an error that the name has no owner follows
    if (const auto next = takeNext()) start(*next);
}

} // namespace velmora
