// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Spawn.h"

#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

extern "C" { // which glibc 2.36 forgot to say itself
#include <sys/pidfd.h>
}

namespace velmora {

namespace {

/// As posix_spawn takes them; the strings must outlive the result.
std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (auto& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

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

class SpawnActions {
public:
    explicit SpawnActions(int output)
    {
        posix_spawn_file_actions_init(&actions_);
        if (output >= 0) posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        // Libraries open some that stay open across exec.
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

} // namespace

Child spawn(std::vector<std::string> arguments, std::vector<std::string> environment, int output)
{
    Child child;
    const int failure =
        posix_spawn(&child.id, arguments.at(0).c_str(), SpawnActions(output).get(), SpawnAttributes().get(),
                    pointers(arguments).data(), pointers(environment).data());
    if (failure != 0) throw std::system_error(failure, std::generic_category(), arguments[0]);
    child.process = FileDescriptor(pidfd_open(child.id, 0));
    if (child.process) return child;
    const int why = errno;
    kill(child.id, SIGKILL); // nobody could see its end
    waitpid(child.id, nullptr, 0);
    throw std::system_error(why, std::generic_category(), "pidfd_open");
}

std::vector<std::string> currentEnvironment()
{
    std::vector<std::string> environment;
    for (char** one = environ; one && *one; ++one) environment.emplace_back(*one);
    return environment;
}

} // namespace velmora
