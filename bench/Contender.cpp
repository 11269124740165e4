// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Contender.h"

#include "bus/DBus.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace velmora {

namespace {

/// The numbers after the names in a file of /proc: "Pss:   1234 kB".
std::map<std::string, long> namedNumbers(const std::filesystem::path& file)
{
    std::map<std::string, long> numbers;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        const auto colon = line.find(':');
        if (colon != std::string::npos) numbers[line.substr(0, colon)] = std::atol(line.c_str() + colon + 1);
    }
    return numbers;
}

std::filesystem::path procOf(pid_t id)
{
    return std::filesystem::path("/proc") / std::to_string(id);
}

/// Our environment, each of `more` in the place of the variable that it names.
std::vector<std::string> environmentWith(const std::vector<std::string>& more)
{
    std::map<std::string, std::string> variables;
    const auto add = [&](const std::string& pair) { variables[pair.substr(0, pair.find('='))] = pair; };
    for (char** pair = environ; *pair; ++pair) add(*pair);
    for (const auto& pair : more) add(pair);
    std::vector<std::string> all;
    for (const auto& [name, pair] : variables) all.push_back(pair);
    return all;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

void collect(sd_bus_message* message, Contents& all)
{
    char type = 0;
    const char* inner = nullptr;
    while (sd_bus_message_peek_type(message, &type, &inner) > 0) {
        if (inner) {
            sd_bus_message_enter_container(message, type, inner);
            collect(message, all);
            sd_bus_message_exit_container(message);
        } else if (type == SD_BUS_TYPE_DOUBLE) {
            sd_bus_message_read_basic(message, type, &all.numbers.emplace_back());
        } else if (type == SD_BUS_TYPE_STRING || type == SD_BUS_TYPE_OBJECT_PATH) {
            const char* text = nullptr;
            sd_bus_message_read_basic(message, type, &text);
            all.texts.emplace_back(text ? text : "");
        } else {
            sd_bus_message_skip(message, std::string(1, type).c_str());
        }
    }
}

} // namespace

Contents Contents::of(sd_bus_message* message)
{
    Contents all;
    collect(message, all);
    return all;
}

std::optional<pid_t> processOf(sd_bus* bus, const char* name)
{
    sd_bus_message* reply = nullptr;
    std::uint32_t process = 0;
    const int answered = sd_bus_call_method(bus, dbus::busName, dbus::busPath, dbus::busName,
                                            "GetConnectionUnixProcessID", nullptr, &reply, "s", name);
    const dbus::Message owned(reply);
    if (answered == -ENXIO) return std::nullopt;
    dbus::check(answered, "the bus");
    dbus::check(sd_bus_message_read(reply, "u", &process), "the bus");
    return static_cast<pid_t>(process);
}

Memory memoryOf(pid_t process)
{
    auto numbers = namedNumbers(procOf(process) / "smaps_rollup");
    return {numbers["Rss"], numbers["Private_Clean"] + numbers["Private_Dirty"], numbers["Pss"],
            numbers["Private_Dirty"]};
}

Nanoseconds processorTimeOf(pid_t process)
{
    clockid_t clock = 0;
    timespec time{};
    if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0)
        throw std::runtime_error("a program ended by itself");
    return std::chrono::seconds(time.tv_sec) + Nanoseconds(time.tv_nsec);
}

long wakeUpsOf(pid_t process)
{
    long all = 0;
    for (const auto& thread : std::filesystem::directory_iterator(procOf(process) / "task"))
        all += namedNumbers(thread.path() / "status")["voluntary_ctxt_switches"];
    return all;
}

CallCounter::CallCounter(pid_t process, std::string log) : log_(std::move(log))
{
    std::vector<std::string> arguments{"strace", "-f", "-q", "-c", "-o", log_, "-p", std::to_string(process)};
    if (posix_spawnp(&tracer_, "strace", nullptr, nullptr, pointersTo(arguments).data(), environ) != 0)
        tracer_ = -1;
    const auto tracerOf = [process] { return namedNumbers(procOf(process) / "status")["TracerPid"]; };
    for (int i = 0; i < 200 && tracerOf() == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::this_thread::sleep_for(std::chrono::milliseconds(100)); // and its other threads
}

CallCounter::~CallCounter()
{
    end();
}

std::optional<long> CallCounter::end()
{
    if (tracer_ < 0) return std::nullopt;
    kill(tracer_, SIGINT);
    waitpid(std::exchange(tracer_, -1), nullptr, 0);
    std::optional<long> total;
    std::ifstream in(log_);
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line); // "100.00    0.001234           9       130         2 total"
        double percent = 0, seconds = 0;
        long each = 0, calls = 0;
        if (line.ends_with(" total") && words >> percent >> seconds >> each >> calls) total = calls;
    }
    return total;
}

Process::Process(const Program& program, const std::string& log)
{
    auto environment = environmentWith(program.environment);
    std::vector<std::string> arguments{program.path};
    arguments.insert(arguments.end(), program.arguments.begin(), program.arguments.end());
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                     0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    const int failure = posix_spawn(&id_, program.path.c_str(), &actions, nullptr,
                                    pointersTo(arguments).data(), pointersTo(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::system_error(failure, std::generic_category(), program.path);
}

Process::~Process()
{
    kill(id_, SIGKILL);
    waitpid(id_, nullptr, 0);
}

} // namespace velmora
